#include "cli/Commands.h"

#include <QTextStream>
#include <cstdio>

namespace quillora::cli {

namespace {

constexpr const char* kUsageText =
    R"(usage: quillora-cli COMMAND [ARGUMENTS]

commands:
  info [--json] FILE                     show what a message file holds
  extract FILE DIR                       restore its files into DIR and write DIR/body.html
  pack HTML -o OUT [--subject S] [--priority NR|HI|LW] [--attach FILE]...
                                         make a message file from an HTML page, embedding
                                         every local file it refers to
  slice IMAGE -o OUT [--width W] [--height H] [--subject S]
                                         make a message file from one tall picture cut
                                         into stacked slices (width 600, slices of 100)
  to-eml FILE -o OUT [--account ID] [--to ADDR] [--name NAME] [--reply-to ADDR]
         [--receipt] [--counter]         write a message as the e-mail a mailing sends
  spamcheck FILE [--account ID] [--counter] [--json] [mail options of to-eml]
                                         score that e-mail with SpamAssassin
  check [--json] [--size-limit MB] FILE  check a message before sending it (exit 3 when it
                                         has errors)
  send FILE --account ID --to ADDR [--trust-certificate SHA256] [--timeout S]
                                         send a message as a test to one address through
                                         an account (password: QUILLORA_SMTP_PASSWORD or
                                         standard input)
  import FILE -o OUT [--subject S]       make a message file from a document (.doc, .docx,
                                         .rtf, .odt), a mail (.eml, .msg), a text file or
                                         an HTML page, embedding every picture it shows
  accounts list                          list the sender accounts
  accounts add --name NAME --address ADDRESS [--server HOST] [--port N]
               [--auth none|plain|login] [--security none|starttls|ssl|auto] [--inactive]
  accounts remove ID                     remove the account with that identifier
  snippets list                          list the stored snippets: number, title
  snippets add --title T (--text S | --file F)
                                         store a snippet and print its number
  snippets show N                        print the text of snippet N
  snippets remove N                      delete snippet N
  templates list                         list the templates: category, name, page
  help [COMMAND]                         show this text, or the help of one command

"quillora-cli COMMAND --help" shows the options of one command. Options may come before or
after the other arguments; an argument that starts with "-" goes after "--".
The accounts database lives in the shared data folder (see README.md).
)";

struct Command {
    const char* name;
    int (*run)(const QStringList& args);
};

constexpr Command kCommands[] = {
    {"info", info},     {"extract", extract},     {"pack", pack},          {"slice", slice},
    {"to-eml", toEml},  {"spamcheck", spamcheck}, {"check", checkMessage}, {"send", sendTest},
    {"import", import}, {"accounts", accounts},   {"snippets", snippets},  {"templates", templates},
};

// An option name as it would be typed.
QString dashed(const QString& name) {
    return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
}

QString helpText(const QCommandLineParser& parser, const Syntax& syntax) {
    // Qt's first line names the program by the path it was started with and leaves out the
    // command: replace it with the usage line of the command.
    const QString text = parser.helpText();
    const QString usage =
        QStringLiteral("usage: quillora-cli %1 %2").arg(syntax.command, syntax.synopsis);
    return usage.trimmed() + u'\n' + text.mid(text.indexOf(u'\n'));
}

int topLevelError(const QString& problem) {
    printError(problem + QStringLiteral("; see quillora-cli --help"));
    return kUsage;
}

} // namespace

void printError(const QString& message) {
    QTextStream(stderr) << "quillora-cli: " << message << Qt::endl;
}

void printOut(const QString& text) {
    QTextStream out(stdout);
    out << text;
    out.flush();
}

int usageError(const Syntax& syntax, const QString& problem) {
    printError(QStringLiteral("%1: %2; see quillora-cli %1 --help").arg(syntax.command, problem));
    return kUsage;
}

std::optional<int> parseCommand(QCommandLineParser& parser, const Syntax& syntax,
                                const QStringList& args) {
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help."));
    parser.setApplicationDescription(syntax.description);
    parser.addOption(help);
    parser.addOptions(syntax.options);
    for (const Positional& p : syntax.positionals)
        parser.addPositionalArgument(p.name, p.description);
    if (syntax.subcommand)
        parser.setOptionsAfterPositionalArgumentsMode(
            QCommandLineParser::ParseAsPositionalArguments);

    // The parser skips the first entry, the program's name.
    if (!parser.parse(QStringList{QStringLiteral("quillora-cli")} + args)) {
        const QStringList unknown = parser.unknownOptionNames();
        if (!unknown.isEmpty()) {
            QString problem = QStringLiteral("unknown option \"%1\"").arg(dashed(unknown.first()));
            // "-3" reads as option 3: say how to pass a negative number.
            if (unknown.first().front().isDigit())
                problem += QStringLiteral(" (write -- before an argument that starts with -)");
            return usageError(syntax, problem);
        }
        QString problem = parser.errorText();
        if (problem.endsWith(u'.'))
            problem.chop(1);
        return usageError(syntax, problem);
    }
    if (parser.isSet(help)) {
        printOut(helpText(parser, syntax));
        return kOk;
    }
    const QStringList given = parser.positionalArguments();
    const qsizetype wanted = syntax.positionals.size();
    if (given.size() < wanted)
        return usageError(
            syntax, QStringLiteral("%1 is missing").arg(syntax.positionals[given.size()].name));
    if (given.size() > wanted && !syntax.subcommand)
        return usageError(syntax, QStringLiteral("unexpected argument \"%1\"").arg(given[wanted]));
    return std::nullopt;
}

int run(const QStringList& args) {
    if (args.isEmpty()) {
        printError(QStringLiteral("no command given"));
        QTextStream(stderr) << kUsageText;
        return kUsage;
    }
    const QString command = args.first();
    const QStringList rest = args.mid(1);
    // "help pack" is "pack --help".
    if (command == QLatin1String("help") && !rest.isEmpty())
        return run(rest + QStringList{QStringLiteral("--help")});
    if (command == QLatin1String("help") || command == QLatin1String("--help") ||
        command == QLatin1String("-h")) {
        printOut(QString::fromLatin1(kUsageText));
        return kOk;
    }
    for (const Command& c : kCommands) {
        if (command == QLatin1String(c.name))
            return c.run(rest);
    }
    if (command.startsWith(u'-'))
        return topLevelError(QStringLiteral("unknown option \"%1\"").arg(command));
    return topLevelError(QStringLiteral("unknown command \"%1\"").arg(command));
}

} // namespace quillora::cli
