#pragma once

#include <QStringList>

namespace quillora::cli {

// Exit codes shared by every command.
inline constexpr int kOk = 0;
inline constexpr int kBadInput = 1;
inline constexpr int kUsage = 2;

int run(const QStringList& args);

// One function per command; each gets the arguments after its name.
int accounts(const QStringList& args);
int info(const QStringList& args);
int extract(const QStringList& args);
int pack(const QStringList& args);

// Helpers for the commands.
void printError(const QString& message);
void printOut(const QString& text);
int usage(const QString& problem = QString());

} // namespace quillora::cli
