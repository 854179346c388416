#include "cli/Commands.h"

#include "cli/Environment.h"

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
  accounts list                          list the sender accounts
  accounts add --name NAME --address ADDRESS [--server HOST] [--port N]
               [--auth none|plain|login] [--security none|starttls|ssl] [--inactive]
  accounts remove ID                     remove the account with that identifier
  help                                   show this text

The accounts database lives in the shared data folder (see README.md).
)";

} // namespace

void printError(const QString& message) {
    QTextStream(stderr) << "quillora-cli: " << message << Qt::endl;
}

void printOut(const QString& text) {
    QTextStream out(stdout);
    out << text;
    out.flush();
}

int usage(const QString& problem) {
    if (!problem.isEmpty())
        printError(problem);
    QTextStream(stderr) << kUsageText;
    return kUsage;
}

int run(const QStringList& args) {
    if (args.isEmpty())
        return usage(QStringLiteral("no command given"));
    const QString command = args.first();
    const QStringList rest = args.mid(1);
    if (command == QLatin1String("help") || command == QLatin1String("--help") ||
        command == QLatin1String("-h")) {
        printOut(QString::fromLatin1(kUsageText));
        return kOk;
    }
    if (command == QLatin1String("accounts"))
        return accounts(rest);
    if (command == QLatin1String("info"))
        return info(rest);
    if (command == QLatin1String("extract"))
        return extract(rest);
    if (command == QLatin1String("pack"))
        return pack(rest);
    return usage(QStringLiteral("unknown command \"%1\"").arg(command));
}

} // namespace quillora::cli
