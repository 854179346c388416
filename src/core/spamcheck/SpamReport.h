#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

// The filter's verdict, read from the e-mail it hands back ("out.eml").
namespace quillora::SpamReport {

// One matched rule of the report's details block.
struct Rule {
    double points = 0;
    QString name;
    QString description; // a description wrapped over several lines is joined by blanks
    bool operator==(const Rule&) const = default;
};

struct Report {
    bool statusFound = false; // the e-mail carried an "X-Spam-Status:" header
    bool spam = false;
    double score = 0;
    double required = 0;
    QStringList details; // the lines of the details block, trimmed
    QList<Rule> rules;   // the same lines read as rules
    QStringList tests;   // the rule names listed by "tests=" in the status header
};

// Reads the first "X-Spam-Status:" header with its folded continuation lines, and the details
// block: the lines after the "----" line that follows "Content analysis details:", up to the
// first empty line. Numbers are read leniently ("score=5.2x" is 5.2, "score=" is 0).
Report parse(const QStringList& lines);
Report parse(QByteArrayView eml);

// "Spam Status.....: YES", "Spam Score......: 7.3", "Spam Required...: 5", each ending in CR LF.
QString summary(const Report& report);
// The summary, then each detail line after a CR LF: what the check's log shows.
QString logText(const Report& report);

// How much of the score bar (0 to 100, more below zero) stays covered: 100 at a score of 0,
// less as the score rises, 0 above the required score. Empty when a required score of 0 makes
// the extent undefined.
std::optional<int> coverExtent(double score, double required);

// "7.30 / 5.00": two decimals and a point, whatever the locale.
QString scoreLabel(double score, double required);

} // namespace quillora::SpamReport
