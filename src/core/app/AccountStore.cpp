#include "core/app/AccountStore.h"

#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace quillora {

namespace {

constexpr const char* kSchema = R"(CREATE TABLE IF NOT EXISTS Account (
    id             INTEGER PRIMARY KEY AUTOINCREMENT,
    display_name   TEXT    NOT NULL,
    address        TEXT    NOT NULL,
    active         INTEGER NOT NULL DEFAULT 1,
    smtp_server    TEXT    NOT NULL DEFAULT '',
    smtp_port      INTEGER NOT NULL DEFAULT 587,
    authentication TEXT    NOT NULL DEFAULT 'login',
    security       TEXT    NOT NULL DEFAULT 'starttls'
))";

Account fromQuery(const QSqlQuery& q) {
    Account a;
    a.id = q.value(0).toLongLong();
    a.displayName = q.value(1).toString();
    a.address = q.value(2).toString();
    a.active = q.value(3).toInt() != 0;
    a.smtpServer = q.value(4).toString();
    a.port = q.value(5).toInt();
    a.authentication = q.value(6).toString();
    a.security = q.value(7).toString();
    return a;
}

// A null QString binds as SQL NULL; the columns hold empty text instead.
QString text(const QString& s) {
    return s.isNull() ? QStringLiteral("") : s.trimmed();
}

constexpr const char* kSelect = "SELECT id, display_name, address, active, smtp_server, "
                                "smtp_port, authentication, security FROM Account";

} // namespace

StoreResult AccountStore::open(const QString& path, const QString& connectionName) {
    if (QSqlDatabase::contains(connectionName))
        close(connectionName);
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
    if (!db.isValid())
        return {QStringLiteral("The SQLite driver for Qt is not installed")};
    db.setDatabaseName(path);
    if (!db.open()) {
        const QString error = db.lastError().text();
        return {QStringLiteral("Cannot open the accounts database %1: %2").arg(path, error)};
    }
    QSqlQuery q(db);
    if (!q.exec(QLatin1String(kSchema)))
        return {QStringLiteral("The accounts database %1 cannot be prepared: %2")
                    .arg(path, q.lastError().text())};
    return {};
}

void AccountStore::close(const QString& connectionName) {
    {
        QSqlDatabase db = QSqlDatabase::database(connectionName, false);
        if (db.isOpen())
            db.close();
    }
    QSqlDatabase::removeDatabase(connectionName);
}

bool AccountStore::isOpen(const QString& connectionName) {
    return QSqlDatabase::contains(connectionName) &&
           QSqlDatabase::database(connectionName, false).isOpen();
}

AccountStore::AccountStore(const QString& connectionName) : m_connection(connectionName) {}

QSqlDatabase AccountStore::db() const {
    return QSqlDatabase::database(m_connection, false);
}

std::optional<QList<Account>> AccountStore::list(QString* error) const {
    QSqlQuery q(db());
    if (!q.exec(QLatin1String(kSelect) + QStringLiteral(" ORDER BY id"))) {
        if (error)
            *error = q.lastError().text();
        return std::nullopt;
    }
    QList<Account> out;
    while (q.next())
        out.append(fromQuery(q));
    return out;
}

std::optional<Account> AccountStore::find(qint64 id) const {
    QSqlQuery q(db());
    q.prepare(QLatin1String(kSelect) + QStringLiteral(" WHERE id = ?"));
    q.addBindValue(id);
    if (!q.exec() || !q.next())
        return std::nullopt;
    return fromQuery(q);
}

QString AccountStore::validate(const Account& a) {
    static const QRegularExpression address(QStringLiteral(R"(^[^@\s]+@[^@\s]+\.[^@\s]+$)"));
    if (a.displayName.trimmed().isEmpty())
        return QStringLiteral("the display name is empty");
    if (!address.match(a.address.trimmed()).hasMatch())
        return QStringLiteral("\"%1\" is not an e-mail address").arg(a.address);
    if (a.port < 1 || a.port > 65535)
        return QStringLiteral("the port %1 is not between 1 and 65535").arg(a.port);
    static const QStringList auths = {QStringLiteral("none"), QStringLiteral("plain"),
                                      QStringLiteral("login")};
    if (!auths.contains(a.authentication))
        return QStringLiteral("the authentication must be none, plain or login");
    static const QStringList securities = {QStringLiteral("none"), QStringLiteral("starttls"),
                                           QStringLiteral("ssl"), QStringLiteral("auto")};
    if (!securities.contains(a.security))
        return QStringLiteral("the connection security must be none, starttls, ssl or auto");
    return QString();
}

std::optional<qint64> AccountStore::add(const Account& a, QString* error) {
    const QString problem = validate(a);
    if (!problem.isEmpty()) {
        if (error)
            *error = problem;
        return std::nullopt;
    }
    QSqlQuery q(db());
    q.prepare(QStringLiteral("INSERT INTO Account (display_name, address, active, smtp_server, "
                             "smtp_port, authentication, security) VALUES (?, ?, ?, ?, ?, ?, ?)"));
    q.addBindValue(text(a.displayName));
    q.addBindValue(text(a.address));
    q.addBindValue(a.active ? 1 : 0);
    q.addBindValue(text(a.smtpServer));
    q.addBindValue(a.port);
    q.addBindValue(text(a.authentication));
    q.addBindValue(text(a.security));
    if (!q.exec()) {
        if (error)
            *error = q.lastError().text();
        return std::nullopt;
    }
    return q.lastInsertId().toLongLong();
}

bool AccountStore::update(const Account& a, QString* error) {
    const QString problem = validate(a);
    if (!problem.isEmpty()) {
        if (error)
            *error = problem;
        return false;
    }
    QSqlQuery q(db());
    q.prepare(QStringLiteral("UPDATE Account SET display_name = ?, address = ?, active = ?, "
                             "smtp_server = ?, smtp_port = ?, authentication = ?, security = ? "
                             "WHERE id = ?"));
    q.addBindValue(text(a.displayName));
    q.addBindValue(text(a.address));
    q.addBindValue(a.active ? 1 : 0);
    q.addBindValue(text(a.smtpServer));
    q.addBindValue(a.port);
    q.addBindValue(text(a.authentication));
    q.addBindValue(text(a.security));
    q.addBindValue(a.id);
    if (!q.exec()) {
        if (error)
            *error = q.lastError().text();
        return false;
    }
    if (q.numRowsAffected() == 0) {
        if (error)
            *error = QStringLiteral("no account has the identifier %1").arg(a.id);
        return false;
    }
    return true;
}

QString AccountStore::securityCaption(const QString& security) {
    if (security == u"ssl")
        return QStringLiteral("(SSL)");
    if (security == u"starttls")
        return QStringLiteral("(TLS)");
    if (security == u"auto")
        return QStringLiteral("(AUTO)");
    return QStringLiteral("(nessuna)");
}

bool AccountStore::remove(qint64 id, QString* error) {
    QSqlQuery q(db());
    q.prepare(QStringLiteral("DELETE FROM Account WHERE id = ?"));
    q.addBindValue(id);
    if (!q.exec()) {
        if (error)
            *error = q.lastError().text();
        return false;
    }
    if (q.numRowsAffected() == 0) {
        if (error)
            *error = QStringLiteral("no account has the identifier %1").arg(id);
        return false;
    }
    return true;
}

} // namespace quillora
