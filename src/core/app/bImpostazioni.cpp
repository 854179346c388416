#include "core/app/bImpostazioni.h"

#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "core/app/bFunctions.h"

#include <cmath>

namespace quillora::bImpostazioni {

namespace {

constexpr qsizetype kKeyWidth = 16;

const QString& keyLeft() {
    static const QString k = QStringLiteral("mnLeft........: ");
    return k;
}
const QString& keyTop() {
    static const QString k = QStringLiteral("mnTop.........: ");
    return k;
}
const QString& keyWidth() {
    static const QString k = QStringLiteral("mnWidth.......: ");
    return k;
}
const QString& keyHeight() {
    static const QString k = QStringLiteral("mnHeight......: ");
    return k;
}
const QString& keyState() {
    static const QString k = QStringLiteral("mnWindowState.: ");
    return k;
}

// The platform's text form of a single-precision number: whole numbers without a decimal
// separator, seven significant digits.
QString singleText(float v) {
    if (v == std::trunc(v) && std::fabs(v) < 1e7f)
        return QString::number(qint64(v));
    return QString::number(double(v), 'G', 7);
}

} // namespace

void LeggiIMP(const QString& file, WindowPlacement& placement) {
    QStringList lines;
    if (TextFile::readLines(file, lines, kMaxSettingsBytes).ok())
        ApplyPlacementLines(lines, placement);
}

void ApplyPlacementLines(const QStringList& lines, WindowPlacement& placement) {
    for (const QString& line : lines) {
        if (line.size() < kKeyWidth)
            continue;
        const QStringView key = QStringView(line).left(kKeyWidth);
        const QStringView value = QStringView(line).mid(kKeyWidth).trimmed();
        // A value that does not fit the field leaves the field as it was.
        if (key == keyLeft()) {
            if (auto v = bFunctions::ValSingle(value))
                placement.left = *v;
        } else if (key == keyTop()) {
            if (auto v = bFunctions::ValSingle(value))
                placement.top = *v;
        } else if (key == keyWidth()) {
            if (auto v = bFunctions::ValSingle(value))
                placement.width = *v;
        } else if (key == keyHeight()) {
            if (auto v = bFunctions::ValSingle(value))
                placement.height = *v;
        } else if (key == keyState()) {
            if (auto v = bFunctions::ValInteger(value))
                placement.state = *v;
        }
    }
}

void RememberPlacement(WindowPlacement& placement, int state, float left, float top, float width,
                       float height) {
    if (state != kWindowNormal)
        return;
    placement.left = left;
    placement.top = top;
    placement.width = width;
    placement.height = height;
}

QStringList PlacementLines(const WindowPlacement& p) {
    const int state = p.state == kWindowMinimised ? kWindowNormal : p.state;
    return {QStringLiteral("[Form frmMain]"),   keyLeft() + singleText(p.left),
            keyTop() + singleText(p.top),       keyWidth() + singleText(p.width),
            keyHeight() + singleText(p.height), keyState() + QString::number(state)};
}

bool ScriviIMP(const QString& file, const WindowPlacement& placement) {
    return TextFile::writeLines(file, PlacementLines(placement));
}

void CaricaNomiCampi(const QString& file, FieldNames& names) {
    QStringList lines;
    const TextFile::Decoded d = TextFile::readLines(file, lines, kMaxSettingsBytes);
    if (!d.ok()) {
        const int number = d.error == TextFile::ReadError::Missing ? 53 : 62;
        bError::wrtErr(QStringLiteral("CaricaNomiCampi"), QStringLiteral("0"), number,
                       TextFile::describe(d.error));
        return;
    }
    if (!ApplyFieldNameLines(lines, names))
        bError::wrtErr(QStringLiteral("CaricaNomiCampi"), QStringLiteral("0"), 62,
                       QStringLiteral("Input past end of file"));
}

bool ApplyFieldNameLines(const QStringList& lines, FieldNames& names) {
    for (int i = 0; i < 9; ++i) {
        if (i >= lines.size())
            return false;
        const QString name = lines[i].trimmed();
        if (!name.isEmpty())
            names[size_t(i)] = name;
    }
    return true;
}

} // namespace quillora::bImpostazioni
