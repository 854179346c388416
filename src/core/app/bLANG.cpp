#include "core/app/bLANG.h"

#include "core/app/LanguageKeys.h"
#include "core/app/TextFile.h"
#include "core/app/bFunctions.h"

#include <QFileInfo>
#include <limits>
#include <vector>

namespace quillora::bLANG {

namespace {

// A language file is a few hundred lines; anything this large is not one.
constexpr qint64 kMaxLanguageFileBytes = 64 * 1024 * 1024;
// The selection file has one short line that matters.
constexpr qint64 kMaxChoiceFileBytes = 1024 * 1024;

constexpr QStringView kMarker = u"[<LNG";
constexpr QStringView kName = u"[<NOME>]";
constexpr QLatin1String kJoin("[|]");
constexpr QLatin1String kLineBreak("**vbCrLf**");

QString firstLine(const QString& file) {
    QStringList lines;
    TextFile::readLines(file, lines, kMaxChoiceFileBytes);
    return lines.isEmpty() ? QString() : lines.first();
}

bool isHeader(QStringView line) {
    return line.startsWith(kMarker) && line.size() >= 8 && line[7] == u']';
}

bool isSection(QStringView line) {
    if (line.size() < 8 || line[0] != u'[' || line[7] != u']')
        return false;
    const QStringView kind = line.mid(1, 6);
    return kind == u"<FORM>" || kind == u"<MDLO>";
}

bool isAsciiDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}

// Where each marker "[<LNGn>]", n = 1..last, first occurs in the line (-1 when it does not),
// found in one scan: a line is cut at up to LanguageCount + 1 markers, and a hostile file may
// declare thousands of languages.
std::vector<qsizetype> markerPositions(QStringView line, int last) {
    std::vector<qsizetype> at(size_t(last) + 2, -1);
    for (qsizetype from = line.indexOf(kMarker); from >= 0;
         from = line.indexOf(kMarker, from + kMarker.size())) {
        const qsizetype first = from + kMarker.size();
        qsizetype end = first;
        while (end < line.size() && isAsciiDigit(line[end]))
            ++end;
        const qsizetype digits = end - first;
        // "[<LNG01>]" is not the marker of language 1: the number is written plainly.
        if (digits == 0 || digits > 5 || line[first] == u'0')
            continue;
        if (end + 1 >= line.size() || line[end] != u'>' || line[end + 1] != u']')
            continue;
        const int n = line.mid(first, digits).toInt();
        if (n <= last && at[size_t(n)] < 0)
            at[size_t(n)] = from;
    }
    return at;
}

qsizetype markerLength(int n) {
    return kMarker.size() + QString::number(n).size() + 2;
}

// The text of the current language, exactly as the texts of languages 1..n joined with "[|]"
// and split again would give it: a "[|]" inside a text shifts the following texts by one.
// Texts after the current one cannot reach its position, so they are not cut.
QString currentText(QStringView line, const std::vector<qsizetype>& at, int current) {
    QStringList texts;
    texts.reserve(current);
    for (int i = 1; i <= current; ++i) {
        const qsizetype start = at[size_t(i)] < 0 ? -1 : at[size_t(i)] + markerLength(i);
        const qsizetype end = at[size_t(i) + 1];
        // A missing or misplaced marker leaves this language's text empty.
        texts << (start >= 0 && end >= start ? line.mid(start, end - start).toString() : QString());
    }
    const QString join(kJoin);
    return texts.join(join).split(join).value(current - 1);
}

} // namespace

QString SetVarCurrLanguage(const QString& choiceFile) {
    return bFunctions::NVL(QVariant(firstLine(choiceFile)), QVariant(QString()))
        .toString()
        .trimmed();
}

QString ControlloLingua(const QString& choiceFile) {
    return firstLine(choiceFile).trimmed();
}

namespace {

LanguageTexts pickTexts(const QStringList& lines, qint64 byteSize, const QString& currentLanguage) {
    LanguageTexts out;
    LoadResult& r = out.result;
    r.read = true;

    // First pass: the language names. The later of two equal names wins.
    for (const QString& line : lines) {
        if (!isHeader(line) || r.LanguageCount == std::numeric_limits<qint16>::max())
            continue;
        ++r.LanguageCount;
        if (QStringView(line).mid(8) == currentLanguage)
            r.CurrentLanguageIndex = r.LanguageCount;
    }

    // Second pass: the texts. The position counts two bytes a character and two for the line
    // end, as the files were written; a file in another encoding would overshoot its size.
    out.maximum = std::max<qint64>(byteSize, 0);
    out.lines.reserve(size_t(lines.size()));
    qint64 position = 0;
    QString section;
    const int current = r.CurrentLanguageIndex;
    for (QString line : lines) {
        position += (qint64(line.size()) + 2) * 2;
        out.lines.push_back({position, -1});
        line.replace(kLineBreak, QStringLiteral("\r\n"));

        if (isSection(line)) {
            section = line.mid(10);
            continue;
        }
        if (line.startsWith(kMarker) || current == 0)
            continue;
        const qsizetype name = line.indexOf(kName);
        if (name < 0)
            continue;
        const std::vector<qsizetype> at = markerPositions(line, current + 1);
        const qsizetype keyStart = name + kName.size();
        if (at[1] < keyStart)
            continue;
        QString fullKey = section + u'.' + line.mid(keyStart, at[1] - keyStart);
        if (!findKey(fullKey))
            continue;
        out.lines.back().text = int(out.texts.size());
        out.texts.emplace_back(std::move(fullKey), currentText(line, at, current));
        ++r.applied;
    }
    return out;
}

} // namespace

LanguageTexts ReadLanguageTexts(const QString& languageFile, const QString& currentLanguage) {
    QStringList lines;
    LanguageTexts out;
    if (TextFile::readLines(languageFile, lines, kMaxLanguageFileBytes).ok())
        out = pickTexts(lines, QFileInfo(languageFile).size(), currentLanguage);
    out.languageFile = languageFile;
    out.currentLanguage = currentLanguage;
    return out;
}

LoadResult ApplyLanguageTexts(const LanguageTexts& texts, const ApplyText& apply,
                              const Progress& progress) {
    if (!texts.result.read)
        return texts.result;
    const auto report = [&](qint64 at) {
        if (progress)
            progress(std::min(at, texts.maximum), texts.maximum);
    };
    report(0);
    for (const LanguageTexts::Line& line : texts.lines) {
        report(line.position);
        if (line.text >= 0 && apply) {
            const auto& [key, text] = texts.texts[size_t(line.text)];
            apply(key, text);
        }
    }
    // Read to the end; the lines alone stop short of it by the byte-order mark.
    report(texts.maximum);
    return texts.result;
}

LoadResult LoadLanguages(const QString& languageFile, const QString& currentLanguage,
                         const ApplyText& apply, const Progress& progress) {
    return ApplyLanguageTexts(ReadLanguageTexts(languageFile, currentLanguage), apply, progress);
}

LoadResult LoadLanguageLines(const QStringList& lines, qint64 byteSize,
                             const QString& currentLanguage, const ApplyText& apply,
                             const Progress& progress) {
    return ApplyLanguageTexts(pickTexts(lines, byteSize, currentLanguage), apply, progress);
}

} // namespace quillora::bLANG
