#pragma once

#include "core/spamcheck/PreSendCheck.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QStringList>

#include <optional>

namespace quillora::cli {

// Exit codes shared by every command.
inline constexpr int kOk = 0;
inline constexpr int kBadInput = 1;
inline constexpr int kUsage = 2;
// check: the message has errors.
inline constexpr int kHasErrors = 3;

int run(const QStringList& args);

// One function per command; each gets the arguments after its name.
int accounts(const QStringList& args);
int info(const QStringList& args);
int extract(const QStringList& args);
int pack(const QStringList& args);
int slice(const QStringList& args);
int toEml(const QStringList& args);
int spamcheck(const QStringList& args);
int checkMessage(const QStringList& args);
int sendTest(const QStringList& args);
int import(const QStringList& args);
int snippets(const QStringList& args);
int templates(const QStringList& args);

// A positional argument; every one a command declares is required.
struct Positional {
    QString name;
    QString description;
};

// What one command accepts: its parser and its --help are made from this.
struct Syntax {
    QString command;  // as typed after quillora-cli: "pack", "accounts add"
    QString synopsis; // what follows the command in the usage line
    QString description;
    QList<QCommandLineOption> options;
    QList<Positional> positionals;
    // The first positional names a subcommand: everything after it is left to the subcommand.
    bool subcommand = false;
};

// Parses the arguments of a command. Returns an exit code when the command ends here: its help
// was asked for, or the arguments are wrong (an unknown option, a missing value, too few or too
// many positional arguments). Returns nothing when the command should run.
std::optional<int> parseCommand(QCommandLineParser& parser, const Syntax& syntax,
                                const QStringList& args);

// Helpers for the commands.
void printError(const QString& message);
void printOut(const QString& text);
// Wrong usage of a command: one line on stderr, and kUsage.
int usageError(const Syntax& syntax, const QString& problem);

// A message file read as the editor opens it, its files restored into restoreFolder (with its
// trailing separator); nullopt and the error when it cannot be read.
std::optional<check::CheckInput> checkInputFromFile(const QString& file,
                                                    const QString& restoreFolder, QString* error);

} // namespace quillora::cli
