#include "core/app/bError.h"

#include "core/app/Folders.h"
#include "core/app/TextFile.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>

namespace quillora::bError {

namespace {
QString& currentLog() {
    static QString path;
    return path;
}
} // namespace

QString logPath() {
    return currentLog();
}
void setLogPath(const QString& path) {
    currentLog() = path;
}

QString headerLine(const QString& label, const QString& value) {
    constexpr qsizetype kValueColumn = 23; // 1-based column of the first value character
    QString line = label;
    while (line.size() < kValueColumn - 3)
        line += u'.';
    return line + QStringLiteral(": ") + value;
}

QString generalDateTime() {
    return QLocale::system().toString(QDateTime::currentDateTime(), QLocale::ShortFormat);
}

void InitError(const Folders& folders) {
    currentLog() = folders.logFile();
    const QStringList header = {
        headerLine(QStringLiteral("Inizio applicazione"), generalDateTime()),
        QLatin1String(kHyphens),
        QStringLiteral("### IMPOSTAZIONI - Quillora ###"),
        headerLine(QStringLiteral("APP_PATH"), folders.appPath),
        headerLine(QStringLiteral("APP_MEMORY"), folders.appMemory),
        headerLine(QStringLiteral("APP_TEMPLATE"), folders.appTemplate),
        headerLine(QStringLiteral("APP_DATA_ALLUSER"), folders.appDataAllUser),
        headerLine(QStringLiteral("PATH_FILEIMP"), folders.pathFileImp),
    };
    // A log is not a document: truncate in place so a reader holding it open sees the new run.
    QFile f(currentLog());
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    f.write(TextFile::encodeUtf16LE(TextFile::joinLines(header)));
}

void wrtErrFree(const QString& line) {
    if (!currentLog().isEmpty())
        TextFile::appendLines(currentLog(), {line});
}

void wrtErr(const QString& routine, const QString& step, int number, const QString& description) {
    wrtErrFree(QStringLiteral("Function: ") + routine + QStringLiteral(" >> Passo: ") + step +
               QStringLiteral(" >> ") + QString::number(number) + QStringLiteral(": ") +
               description);
}

void EndError() {
    if (currentLog().isEmpty())
        return;
    TextFile::appendLines(currentLog(),
                          {QLatin1String(kHyphens),
                           headerLine(QStringLiteral("Fine applicazione"), generalDateTime())});
}

QString MyTime() {
    const QTime now = QTime::currentTime();
    // The hundredths come from the same clock reading as the whole seconds.
    const int hundredths = now.msec() / 10;
    return QStringLiteral("%1.%2.%3,%4")
        .arg(now.hour(), 2, 10, QLatin1Char('0'))
        .arg(now.minute(), 2, 10, QLatin1Char('0'))
        .arg(now.second(), 2, 10, QLatin1Char('0'))
        .arg(hundredths, 2, 10, QLatin1Char('0'));
}

QString ErrorReportText(const QString& app, const QString& routine, int line,
                        const QString& description) {
    const QString crlf = QStringLiteral("\r\n");
    return QStringLiteral("App: ") + app + crlf + crlf + QStringLiteral("Routine: ") + routine +
           crlf + crlf + QStringLiteral("Line: ") + QString::number(line) + crlf + crlf +
           QStringLiteral("Description: ") + description;
}

} // namespace quillora::bError
