// The test e-mail of a message: written as .eml, or scored by the spam filter.
#include "cli/Commands.h"
#include "cli/Environment.h"

#include "core/app/AccountStore.h"
#include "core/app/Links.h"
#include "core/app/ProgramFolders.h"
#include "core/app/Provisioning.h"
#include "core/app/bFunctions.h"
#include "core/spamcheck/SpamFilter.h"
#include "core/spamcheck/TestMail.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QTemporaryDir>

namespace quillora::cli {

namespace {

struct MailOptions {
    QCommandLineOption account{QStringLiteral("account"),
                               QStringLiteral("The sender account's identifier (the first active "
                                              "account when left out; see accounts list)."),
                               QStringLiteral("ID")};
    QCommandLineOption to{QStringLiteral("to"),
                          QStringLiteral("The recipient's address (the sender's own when left "
                                         "out)."),
                          QStringLiteral("ADDR")};
    QCommandLineOption name{QStringLiteral("name"), QStringLiteral("The recipient's name."),
                            QStringLiteral("NAME")};
    QCommandLineOption replyTo{QStringLiteral("reply-to"),
                               QStringLiteral("The address replies go to."),
                               QStringLiteral("ADDR")};
    QCommandLineOption receipt{QStringLiteral("receipt"),
                               QStringLiteral("Ask for a read receipt.")};
    QCommandLineOption counter{QStringLiteral("counter"),
                               QStringLiteral("Put the hidden read-counter image into the body.")};
};

// The sender: the account asked for, or the first active one.
std::optional<Account> senderAccount(const QCommandLineParser& parser, const MailOptions& o,
                                     const Folders& folders) {
    const StoreResult opened = AccountStore::open(folders.accountDatabase());
    if (!opened.ok()) {
        printError(opened.error);
        return std::nullopt;
    }
    AccountStore store;
    std::optional<Account> found;
    if (parser.isSet(o.account)) {
        bool ok = false;
        const qint64 id = parser.value(o.account).toLongLong(&ok);
        found = ok ? store.find(id) : std::nullopt;
        if (!found)
            printError(QStringLiteral("no account has the identifier %1; see quillora-cli "
                                      "accounts list")
                           .arg(parser.value(o.account)));
    } else {
        QString error;
        const auto all = store.list(&error);
        for (const Account& a : all.value_or(QList<Account>())) {
            if (a.active) {
                found = a;
                break;
            }
        }
        if (!found)
            printError(error.isEmpty() ? QStringLiteral("there is no active sender account; add "
                                                        "one with quillora-cli accounts add")
                                       : error);
    }
    AccountStore::close();
    return found;
}

// Reads the message and composes its test e-mail; prints why when it cannot.
std::optional<TestMail::Result> composeFrom(const QString& file, const QCommandLineParser& parser,
                                            const MailOptions& o, bool clientMarks,
                                            const QString& restoreFolder) {
    const Folders folders = programFolders();
    Provisioning::ensureDataFolders(folders, ProgramFolders::defaultsFolder(folders),
                                    QLocale::system().name());
    if (!QFileInfo(file).isFile()) {
        printError(QStringLiteral("%1: no such file").arg(file));
        return std::nullopt;
    }
    QStringList warnings;
    const TestMail::ReadResult read = TestMail::readMessageFile(file, restoreFolder, &warnings);
    for (const QString& w : warnings)
        printError(w);
    if (!read.ok()) {
        printError(QStringLiteral("%1: %2").arg(file, read.error));
        return std::nullopt;
    }
    const std::optional<Account> sender = senderAccount(parser, o, folders);
    if (!sender)
        return std::nullopt;
    TestMail::Options options;
    options.sender = *sender;
    options.recipientAddress = parser.value(o.to);
    options.recipientName = parser.value(o.name);
    options.replyTo = parser.value(o.replyTo);
    options.readReceipt = parser.isSet(o.receipt);
    options.readCounter = parser.isSet(o.counter);
    options.readCounterHost = Links::read(folders.linksFile()).readCounter;
    options.clientMarks = clientMarks;
    options.machineName = bFunctions::GetNamePC();
    options.baseFolder = QFileInfo(file).absolutePath() + u'/';
    TestMail::Result r = TestMail::compose(read.content, options);
    if (!r.ok()) {
        printError(QStringLiteral("%1: %2").arg(file, r.error));
        return std::nullopt;
    }
    for (const QString& missing : r.missingImages)
        printError(
            QStringLiteral("the image %1 was not found and stays a plain reference").arg(missing));
    return r;
}

QJsonObject reportJson(const SpamReport::Report& report) {
    QJsonArray rules;
    for (const SpamReport::Rule& rule : report.rules)
        rules.append(QJsonObject{{QStringLiteral("points"), rule.points},
                                 {QStringLiteral("name"), rule.name},
                                 {QStringLiteral("description"), rule.description}});
    // A message judged clean gets no details block: its rules are known by name only.
    if (report.rules.isEmpty()) {
        for (const QString& name : report.tests)
            rules.append(QJsonObject{{QStringLiteral("points"), QJsonValue::Null},
                                     {QStringLiteral("name"), name},
                                     {QStringLiteral("description"), QString()}});
    }
    return QJsonObject{{QStringLiteral("spam"), report.spam},
                       {QStringLiteral("score"), report.score},
                       {QStringLiteral("required"), report.required},
                       {QStringLiteral("rules"), rules}};
}

} // namespace

int toEml(const QStringList& args) {
    const MailOptions o;
    const QCommandLineOption outputOption({QStringLiteral("o"), QStringLiteral("output")},
                                          QStringLiteral("The .eml file to write (required)."),
                                          QStringLiteral("OUT"));
    const Syntax syntax{
        QStringLiteral("to-eml"),
        QStringLiteral("FILE -o OUT [options]"),
        QStringLiteral("Write a message as the e-mail a mailing would send (sender account,\n"
                       "recipient, attachments, inline images), for any mail program."),
        {outputOption, o.account, o.to, o.name, o.replyTo, o.receipt, o.counter},
        {{QStringLiteral("FILE"), QStringLiteral("The message file (.mssx or .mss).")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    if (!parser.isSet(outputOption))
        return usageError(syntax, QStringLiteral("the option -o OUT is missing"));
    QTemporaryDir restore;
    if (!restore.isValid()) {
        printError(QStringLiteral("no temporary folder: %1").arg(restore.errorString()));
        return kBadInput;
    }
    const auto composed =
        composeFrom(parser.positionalArguments().at(0), parser, o, false, restore.path());
    if (!composed)
        return kBadInput;
    QString error;
    if (!TestMail::writeEml(*composed->message, parser.value(outputOption), &error)) {
        printError(QStringLiteral("%1: %2").arg(parser.value(outputOption), error));
        return kBadInput;
    }
    return kOk;
}

int spamcheck(const QStringList& args) {
    const MailOptions o;
    const QCommandLineOption jsonOption(QStringLiteral("json"),
                                        QStringLiteral("Print the verdict as one JSON object."));
    const Syntax syntax{
        QStringLiteral("spamcheck"),
        QStringLiteral("FILE [options]"),
        QStringLiteral("Compose a message's test e-mail, score it with SpamAssassin and print\n"
                       "the verdict and the matched rules. Exit status 0 whatever the verdict."),
        {o.account, o.to, o.name, o.replyTo, o.receipt, o.counter, jsonOption},
        {{QStringLiteral("FILE"), QStringLiteral("The message file (.mssx or .mss).")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    if (SpamFilter::program().isEmpty()) {
        printError(QStringLiteral("spamassassin is not installed; install it with "
                                  "\"apt-get install spamassassin\" (scripts/deps.sh does)"));
        return kBadInput;
    }
    QTemporaryDir restore;
    if (!restore.isValid()) {
        printError(QStringLiteral("no temporary folder: %1").arg(restore.errorString()));
        return kBadInput;
    }
    const auto composed =
        composeFrom(parser.positionalArguments().at(0), parser, o, true, restore.path());
    if (!composed)
        return kBadInput;
    const QString folder =
        programFolders().pathFileImp + QString::fromLatin1(SpamFilter::kFolderName) + u'/';
    QString error;
    if (!QDir().mkpath(folder) ||
        !TestMail::writeEml(*composed->message,
                            folder + QString::fromLatin1(SpamFilter::kInputFile), &error)) {
        printError(QStringLiteral("%1: cannot write the test e-mail: %2").arg(folder, error));
        return kBadInput;
    }
    const bool localOnly = !SpamFilter::dnsAnswers();
    if (localOnly)
        printError(QStringLiteral("no name server answers: the filter runs its local tests only"));
    SpamFilter::Run run;
    run.start(folder, localOnly);
    run.waitForFinished();
    const SpamFilter::Outcome& outcome = run.outcome();
    if (!outcome.ok()) {
        printError(
            QStringLiteral("the filter gave no result%1")
                .arg(outcome.detail.isEmpty() ? QString() : QStringLiteral(": ") + outcome.detail));
        return kBadInput;
    }
    if (parser.isSet(jsonOption))
        printOut(QString::fromUtf8(QJsonDocument(reportJson(outcome.report)).toJson()));
    else
        printOut(SpamReport::logText(outcome.report) + QStringLiteral("\n"));
    return kOk;
}

} // namespace quillora::cli
