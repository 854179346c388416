#include "cli/Commands.h"
#include "cli/Environment.h"

#include "core/app/AccountStore.h"
#include "core/app/TextFile.h"
#include "core/app/Texts.h"
#include "core/app/bFunctions.h"
#include "core/spamcheck/SmtpSender.h"
#include "core/spamcheck/TestMail.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>
#include <cstdio>
#include <termios.h>
#include <unistd.h>

namespace quillora::cli {

namespace {

// One line of standard input; typed without echo when it is a terminal.
QString readPassword() {
    const bool terminal = ::isatty(STDIN_FILENO);
    termios saved{};
    if (terminal) {
        QTextStream(stderr) << "Password: " << Qt::flush;
        ::tcgetattr(STDIN_FILENO, &saved);
        termios quiet = saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
    }
    QTextStream in(stdin);
    const QString line = in.readLine();
    if (terminal) {
        ::tcsetattr(STDIN_FILENO, TCSANOW, &saved);
        QTextStream err(stderr);
        err << Qt::endl;
    }
    return line;
}

Texts userTexts(const Folders& folders) {
    QStringList lines;
    TextFile::readLines(folders.languageChoiceFile(), lines, 4096);
    return Texts::builtIn(lines.isEmpty() ? QStringLiteral("English") : lines.first().trimmed());
}

} // namespace

int sendTest(const QStringList& args) {
    const QCommandLineOption accountOption(QStringLiteral("account"),
                                           QStringLiteral("The sender account's identifier "
                                                          "(see accounts list; required)."),
                                           QStringLiteral("ID"));
    const QCommandLineOption toOption(QStringLiteral("to"),
                                      QStringLiteral("The address to send to (required)."),
                                      QStringLiteral("ADDR"));
    const QCommandLineOption trustOption(
        QStringLiteral("trust-certificate"),
        QStringLiteral("Trust the server certificate with this SHA-256 fingerprint for this\n"
                       "send (a refused certificate prints it)."),
        QStringLiteral("SHA256"));
    const QCommandLineOption timeoutOption(QStringLiteral("timeout"),
                                           QStringLiteral("Seconds to wait for the server (30)."),
                                           QStringLiteral("S"), QStringLiteral("30"));
    const Syntax syntax{
        QStringLiteral("send"),
        QStringLiteral("FILE --account ID --to ADDR [options]"),
        QStringLiteral("Send a message as a test to one address through the account's SMTP\n"
                       "server. The password comes from QUILLORA_SMTP_PASSWORD, else from the\n"
                       "first line of standard input."),
        {accountOption, toOption, trustOption, timeoutOption},
        {{QStringLiteral("FILE"), QStringLiteral("The message file.")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    bool ok = false;
    const qint64 id = parser.value(accountOption).toLongLong(&ok);
    if (!parser.isSet(accountOption) || !ok)
        return usageError(syntax, QStringLiteral("--account ID is missing or not a number"));
    const QString to = parser.value(toOption).trimmed();
    if (to.isEmpty())
        return usageError(syntax, QStringLiteral("--to ADDR is missing"));
    const int timeout = parser.value(timeoutOption).toInt(&ok);
    if (!ok || timeout <= 0)
        return usageError(syntax, QStringLiteral("the timeout must be a whole number of seconds"));
    QByteArray trusted;
    if (parser.isSet(trustOption)) {
        trusted = QByteArray::fromHex(parser.value(trustOption).remove(u':').toLatin1());
        if (trusted.size() != 32)
            return usageError(syntax, QStringLiteral("the fingerprint must be 64 hex digits"));
    }

    const Folders folders = programFolders();
    const StoreResult opened = AccountStore::open(folders.accountDatabase());
    if (!opened.ok()) {
        printError(opened.error);
        return kBadInput;
    }
    const std::optional<Account> account = AccountStore().find(id);
    AccountStore::close();
    if (!account) {
        printError(QStringLiteral("there is no account %1").arg(id));
        return kBadInput;
    }

    const QTemporaryDir restore;
    if (!restore.isValid()) {
        printError(QStringLiteral("cannot make a temporary folder: %1").arg(restore.errorString()));
        return kBadInput;
    }
    const QString file = parser.positionalArguments().at(0);
    QStringList warnings;
    const TestMail::ReadResult read =
        TestMail::readMessageFile(file, restore.path() + u'/', &warnings);
    for (const QString& w : warnings)
        printError(w);
    if (!read.ok()) {
        printError(QStringLiteral("%1: %2").arg(file, read.error));
        return kBadInput;
    }
    // What readers get: no spam-check marks, no read counter.
    TestMail::Options options;
    options.sender = *account;
    options.recipientAddress = to;
    options.clientMarks = false;
    options.machineName = bFunctions::GetNamePC();
    options.baseFolder = QFileInfo(file).absolutePath() + u'/';
    const TestMail::Result composed = TestMail::compose(read.content, options);
    if (!composed.ok()) {
        printError(QStringLiteral("%1: %2").arg(file, composed.error));
        return kBadInput;
    }

    QString password;
    if (account->authentication.toLower() != QLatin1String("none")) {
        password = qEnvironmentVariableIsSet("QUILLORA_SMTP_PASSWORD")
                       ? qEnvironmentVariable("QUILLORA_SMTP_PASSWORD")
                       : readPassword();
    }
    smtp::Settings settings = smtp::settingsFor(*account, password);
    settings.to = {to};
    settings.trustedCertificate = trusted;
    settings.timeoutSeconds = timeout;
    const smtp::Result r = smtp::send(composed.message, settings);
    const QString said = smtp::describe(r, settings, userTexts(folders));
    if (r.ok()) {
        printOut(said + u'\n');
        return kOk;
    }
    printError(said);
    if (r.outcome == smtp::Outcome::BadCertificate && !r.certificate.isEmpty())
        printError(QStringLiteral("to trust this certificate for one send: --trust-certificate %1")
                       .arg(QString::fromLatin1(r.certificate.toHex())));
    return kBadInput;
}

} // namespace quillora::cli
