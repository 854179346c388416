#include "cli/Commands.h"
#include "cli/Environment.h"

#include "core/app/AccountStore.h"
#include "core/app/ProgramFolders.h"
#include "core/app/Provisioning.h"

#include <QDir>
#include <QLocale>

namespace quillora::cli {

namespace {

int listAccounts(AccountStore& store) {
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
}

int addAccount(AccountStore& store, const QStringList& args) {
    Account a;
    a.authentication = QStringLiteral("login");
    a.security = QStringLiteral("starttls");
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& opt = args[i];
        if (opt == QLatin1String("--inactive")) {
            a.active = false;
            continue;
        }
        if (i + 1 >= args.size())
            return usage(QStringLiteral("%1 needs a value").arg(opt));
        const QString value = args[++i];
        if (opt == QLatin1String("--name")) {
            a.displayName = value;
        } else if (opt == QLatin1String("--address")) {
            a.address = value;
        } else if (opt == QLatin1String("--server")) {
            a.smtpServer = value;
        } else if (opt == QLatin1String("--port")) {
            bool ok = false;
            a.port = value.toInt(&ok);
            if (!ok)
                return usage(QStringLiteral("the port \"%1\" is not a number").arg(value));
        } else if (opt == QLatin1String("--auth")) {
            a.authentication = value;
        } else if (opt == QLatin1String("--security")) {
            a.security = value;
        } else {
            return usage(QStringLiteral("unknown option \"%1\"").arg(opt));
        }
    }
    if (a.displayName.isEmpty() || a.address.isEmpty())
        return usage(QStringLiteral("accounts add needs --name and --address"));
    QString error;
    const auto id = store.add(a, &error);
    if (!id) {
        printError(QStringLiteral("cannot add the account: %1").arg(error));
        return kBadInput;
    }
    printOut(QStringLiteral("%1\n").arg(*id));
    return kOk;
}

int removeAccount(AccountStore& store, const QStringList& args) {
    if (args.size() != 1)
        return usage(QStringLiteral("accounts remove needs one identifier"));
    bool ok = false;
    const qint64 id = args.first().toLongLong(&ok);
    if (!ok)
        return usage(QStringLiteral("\"%1\" is not an account identifier").arg(args.first()));
    QString error;
    if (!store.remove(id, &error)) {
        printError(QStringLiteral("cannot remove the account: %1").arg(error));
        return kBadInput;
    }
    return kOk;
}

} // namespace

int accounts(const QStringList& args) {
    if (args.isEmpty())
        return usage(QStringLiteral("accounts needs list, add or remove"));
    const QString sub = args.first();
    if (sub != QLatin1String("list") && sub != QLatin1String("add") &&
        sub != QLatin1String("remove"))
        return usage(QStringLiteral("unknown accounts command \"%1\"").arg(sub));

    const Folders folders = programFolders();
    Provisioning::ensureDataFolders(folders, ProgramFolders::defaultsFolder(folders),
                                    QLocale::system().name());
    const StoreResult opened = AccountStore::open(folders.accountDatabase());
    if (!opened.ok()) {
        printError(opened.error);
        return kBadInput;
    }
    AccountStore store;
    int rc = kOk;
    if (sub == QLatin1String("list"))
        rc = listAccounts(store);
    else if (sub == QLatin1String("add"))
        rc = addAccount(store, args.mid(1));
    else
        rc = removeAccount(store, args.mid(1));
    AccountStore::close();
    return rc;
}

} // namespace quillora::cli
