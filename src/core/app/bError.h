#pragma once

#include <QString>

namespace quillora {
struct Folders;
}

// The run's log, "Log_Quillora.xt2" in the shared data folder, and the text of the one
// error report. Every writer opens the file, writes and closes it again, so another
// program may read the log while the editor runs. No writer ever fails loudly.
namespace quillora::bError {

inline constexpr const char* kHyphens =
    "----------------------------------------------------------------------";

// Creates or truncates the log and writes the header. Remembers the log's path
// for the other writers of this run.
void InitError(const Folders& folders);

// Appends a line as it is.
void wrtErrFree(const QString& line);

// Appends "Function: routine >> Passo: step >> number: description".
void wrtErr(const QString& routine, const QString& step, int number, const QString& description);

// Appends the closing lines.
void EndError();

// The current time as hh.mm.ss,cc.
QString MyTime();

// The log file in use (empty before InitError).
QString logPath();

// Points the writers at a log without writing a header (tools and tests).
void setLogPath(const QString& path);

// "Label.....: " padded with dots so that the value starts in column 23.
QString headerLine(const QString& label, const QString& value);

// The date and time as written in the header and the closing line.
QString generalDateTime();

// The exact text of the error report box.
QString ErrorReportText(const QString& app, const QString& routine, int line,
                        const QString& description);

// The error report box's title.
inline constexpr const char* kErrorReportTitle = "Attention, application error";

} // namespace quillora::bError
