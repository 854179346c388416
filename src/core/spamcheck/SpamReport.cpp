#include "core/spamcheck/SpamReport.h"

#include "core/app/TextFile.h"
#include "core/app/bFunctions.h"

#include <QRegularExpression>
#include <cmath>

namespace quillora::SpamReport {

namespace {

double numberAfterEquals(QStringView word) {
    const qsizetype eq = word.indexOf(u'=');
    return eq < 0 ? 0.0 : bFunctions::Val(word.mid(eq + 1));
}

QString generalNumber(double value) {
    return QString::number(value, 'g', 15);
}

void readStatus(const QString& value, Report& r) {
    r.statusFound = true;
    const QStringList pieces = value.split(u',');
    r.spam = pieces.value(0).trimmed().toLower() == u"yes";
    const QStringList words = pieces.value(1).trimmed().split(
        QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    r.score = numberAfterEquals(words.value(0));
    r.required = numberAfterEquals(words.value(1));

    static const QRegularExpression testsList(
        QStringLiteral("\\btests=((?:[^\\s,]+,\\s*)*[^\\s,]*)"));
    const QRegularExpressionMatch m = testsList.match(value);
    if (m.hasMatch()) {
        for (const QString& t : m.captured(1).split(u',')) {
            const QString name = t.trimmed();
            if (!name.isEmpty() && name != u"none")
                r.tests << name;
        }
    }
}

void readRules(Report& r) {
    static const QRegularExpression rule(
        QStringLiteral("^(-?\\d+(?:\\.\\d+)?)\\s+(\\S+)\\s*(.*)$"));
    for (const QString& line : r.details) {
        const QRegularExpressionMatch m = rule.match(line);
        if (m.hasMatch()) {
            r.rules.append({m.captured(1).toDouble(), m.captured(2), m.captured(3).trimmed()});
        } else if (!r.rules.isEmpty()) {
            Rule& last = r.rules.last();
            last.description +=
                (last.description.isEmpty() ? QString() : QStringLiteral(" ")) + line;
        }
    }
}

} // namespace

Report parse(const QStringList& lines) {
    Report r;
    qsizetype i = 0;
    for (; i < lines.size(); ++i) {
        if (lines[i].startsWith(QLatin1String("X-Spam-Status:"))) {
            QString value = lines[i].mid(14);
            while (i + 1 < lines.size() && !lines[i + 1].isEmpty() &&
                   (lines[i + 1][0] == u' ' || lines[i + 1][0] == u'\t'))
                value += lines[++i];
            readStatus(value, r);
            break;
        }
    }
    qsizetype d = 0;
    while (d < lines.size() && !lines[d].startsWith(QLatin1String("Content analysis details:")))
        ++d;
    while (d < lines.size() && !lines[d].startsWith(QLatin1String("----")))
        ++d;
    for (++d; d < lines.size(); ++d) {
        const QString line = lines[d].trimmed();
        if (line.isEmpty())
            break;
        r.details << line;
    }
    readRules(r);
    return r;
}

Report parse(QByteArrayView eml) {
    // The filter writes the e-mail in its own bytes; header lines are ASCII, descriptions may
    // not be, and UTF-8 is what the rules ship in.
    return parse(TextFile::splitLines(QString::fromUtf8(eml)));
}

QString summary(const Report& r) {
    return QStringLiteral("Spam Status.....: ") +
           (r.spam ? QStringLiteral("YES") : QStringLiteral("NO")) +
           QStringLiteral("\r\nSpam Score......: ") + generalNumber(r.score) +
           QStringLiteral("\r\nSpam Required...: ") + generalNumber(r.required) +
           QStringLiteral("\r\n");
}

QString logText(const Report& r) {
    QString text = summary(r);
    for (const QString& line : r.details)
        text += QStringLiteral("\r\n") + line;
    return text;
}

std::optional<int> coverExtent(double score, double required) {
    if (score > required)
        return 0;
    if (required == 0)
        return std::nullopt;
    const double extent = std::nearbyint(100.0 - (100.0 / required) * score);
    if (!std::isfinite(extent) || std::fabs(extent) > 1e9)
        return std::nullopt;
    return int(extent);
}

QString scoreLabel(double score, double required) {
    return QString::number(score, 'f', 2) + QStringLiteral(" / ") +
           QString::number(required, 'f', 2);
}

} // namespace quillora::SpamReport
