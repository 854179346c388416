#include "cli/Commands.h"
#include "cli/Environment.h"

#include "core/app/AccountStore.h"
#include "core/app/ProgramFolders.h"
#include "core/app/Provisioning.h"

#include <QDir>
#include <QLocale>

#include <functional>

namespace quillora::cli {

namespace {

// Opens the accounts database of the shared data folder (made at the first use) around work.
int withAccountStore(const std::function<int(AccountStore&)>& work) {
    const Folders folders = programFolders();
    Provisioning::ensureDataFolders(folders, ProgramFolders::defaultsFolder(folders),
                                    QLocale::system().name());
    const StoreResult opened = AccountStore::open(folders.accountDatabase());
    if (!opened.ok()) {
        printError(opened.error);
        return kBadInput;
    }
    AccountStore store;
    const int rc = work(store);
    AccountStore::close();
    return rc;
}

int listAccounts(const QStringList& args) {
    const Syntax syntax{QStringLiteral("accounts list"),
                        QString(),
                        QStringLiteral("List the sender accounts, one a line: identifier, name and "
                                       "address,\nstate, server:port, authentication/security."),
                        {},
                        {}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    return withAccountStore([](AccountStore& store) {
        QString error;
        const auto accounts = store.list(&error);
        if (!accounts) {
            printError(QStringLiteral("cannot read the accounts: %1").arg(error));
            return kBadInput;
        }
        QString out;
        if (accounts->isEmpty())
            out = QStringLiteral("no accounts\n");
        for (const Account& a : *accounts) {
            out += QStringLiteral("%1\t%2 <%3>\t%4\t%5:%6\t%7/%8\n")
                       .arg(a.id)
                       .arg(a.displayName, a.address,
                            a.active ? QStringLiteral("active") : QStringLiteral("inactive"),
                            a.smtpServer.isEmpty() ? QStringLiteral("-") : a.smtpServer)
                       .arg(a.port)
                       .arg(a.authentication, a.security);
        }
        printOut(out);
        return kOk;
    });
}

int addAccount(const QStringList& args) {
    const QCommandLineOption nameOption(QStringLiteral("name"),
                                        QStringLiteral("The name recipients see (required)."),
                                        QStringLiteral("NAME"));
    const QCommandLineOption addressOption(QStringLiteral("address"),
                                           QStringLiteral("The sender address (required)."),
                                           QStringLiteral("ADDRESS"));
    const QCommandLineOption serverOption(
        QStringLiteral("server"), QStringLiteral("The SMTP server."), QStringLiteral("HOST"));
    const QCommandLineOption portOption(QStringLiteral("port"),
                                        QStringLiteral("The SMTP port, 1 to 65535 (default 587)."),
                                        QStringLiteral("N"));
    const QCommandLineOption authOption(QStringLiteral("auth"),
                                        QStringLiteral("The authentication (default login)."),
                                        QStringLiteral("none|plain|login"));
    const QCommandLineOption securityOption(
        QStringLiteral("security"), QStringLiteral("The connection security (default starttls)."),
        QStringLiteral("none|starttls|ssl|auto"));
    const QCommandLineOption inactiveOption(
        QStringLiteral("inactive"), QStringLiteral("Keep the account without offering it."));
    const Syntax syntax{QStringLiteral("accounts add"),
                        QStringLiteral("--name NAME --address ADDRESS [options]"),
                        QStringLiteral("Add a sender account and print its identifier."),
                        {nameOption, addressOption, serverOption, portOption, authOption,
                         securityOption, inactiveOption},
                        {}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    Account a;
    a.displayName = parser.value(nameOption);
    a.address = parser.value(addressOption);
    if (a.displayName.isEmpty() || a.address.isEmpty())
        return usageError(syntax, QStringLiteral("--name and --address are both needed"));
    a.smtpServer = parser.value(serverOption);
    if (parser.isSet(portOption)) {
        const QString value = parser.value(portOption);
        bool ok = false;
        a.port = value.toInt(&ok);
        if (!ok || a.port < 1 || a.port > 65535)
            return usageError(
                syntax,
                QStringLiteral("the port must be a number from 1 to 65535, not \"%1\"").arg(value));
    }
    a.authentication =
        parser.isSet(authOption) ? parser.value(authOption) : QStringLiteral("login");
    a.security =
        parser.isSet(securityOption) ? parser.value(securityOption) : QStringLiteral("starttls");
    a.active = !parser.isSet(inactiveOption);
    return withAccountStore([&a](AccountStore& store) {
        QString error;
        const auto id = store.add(a, &error);
        if (!id) {
            printError(QStringLiteral("cannot add the account: %1").arg(error));
            return kBadInput;
        }
        printOut(QStringLiteral("%1\n").arg(*id));
        return kOk;
    });
}

int removeAccount(const QStringList& args) {
    const Syntax syntax{
        QStringLiteral("accounts remove"),
        QStringLiteral("ID"),
        QStringLiteral("Remove a sender account."),
        {},
        {{QStringLiteral("ID"), QStringLiteral("Its identifier, as accounts list shows it.")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const QString given = parser.positionalArguments().at(0);
    bool ok = false;
    const qint64 id = given.toLongLong(&ok);
    if (!ok)
        return usageError(syntax, QStringLiteral("\"%1\" is not an account identifier").arg(given));
    return withAccountStore([id](AccountStore& store) {
        QString error;
        if (!store.remove(id, &error)) {
            printError(QStringLiteral("cannot remove the account: %1").arg(error));
            return kBadInput;
        }
        return kOk;
    });
}

struct Subcommand {
    const char* name;
    int (*run)(const QStringList& args);
};

constexpr Subcommand kSubcommands[] = {
    {"list", listAccounts},
    {"add", addAccount},
    {"remove", removeAccount},
};

} // namespace

int accounts(const QStringList& args) {
    const Syntax syntax{
        QStringLiteral("accounts"),
        QStringLiteral("list|add|remove [ARGUMENTS]"),
        QStringLiteral("Manage the sender accounts, kept in the shared data folder.\n"
                       "\"quillora-cli accounts COMMAND --help\" shows the options of one."),
        {},
        {{QStringLiteral("COMMAND"), QStringLiteral("list: list the accounts; add: add one; "
                                                    "remove: remove one.")}},
        true};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const QStringList given = parser.positionalArguments();
    for (const Subcommand& sub : kSubcommands) {
        if (given.first() == QLatin1String(sub.name))
            return sub.run(given.mid(1));
    }
    return usageError(syntax, QStringLiteral("unknown accounts command \"%1\"").arg(given.first()));
}

} // namespace quillora::cli
