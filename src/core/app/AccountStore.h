#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// The product family's accounts: sender identities with their SMTP settings.
namespace quillora {

struct Account {
    qint64 id = 0;       // identifier, assigned by the store
    QString displayName; // shown to recipients
    QString address;     // sender e-mail address
    bool active = true;  // inactive accounts are kept but not offered
    QString smtpServer;
    int port = 587;
    QString authentication; // "none", "plain", "login"
    QString security;       // "none", "starttls", "ssl", "auto"
};

// Result of a store operation: the error text is empty on success.
struct StoreResult {
    QString error;
    bool ok() const { return error.isEmpty(); }
};

// One named Qt SQL connection to the accounts database ("AccountConnection").
class AccountStore {
public:
    static constexpr const char* kConnectionName = "AccountConnection";

    // Opens (creating the file and table when missing) the database at `path`.
    static StoreResult open(const QString& path, const QString& connectionName = kConnectionName);
    static void close(const QString& connectionName = kConnectionName);
    static bool isOpen(const QString& connectionName = kConnectionName);

    explicit AccountStore(const QString& connectionName = kConnectionName);

    std::optional<QList<Account>> list(QString* error = nullptr) const;
    std::optional<Account> find(qint64 id) const;
    // Adds the account and returns its new identifier.
    std::optional<qint64> add(const Account& account, QString* error = nullptr);
    // Replaces the stored values of the account with account.id; false when there is none.
    bool update(const Account& account, QString* error = nullptr);
    // False when no account has that identifier.
    bool remove(qint64 id, QString* error = nullptr);

    // Checks an account before it is stored; empty when it is acceptable.
    static QString validate(const Account& account);

    // How the connection security is shown: "(nessuna)", "(SSL)", "(TLS)" or "(AUTO)".
    static QString securityCaption(const QString& security);

private:
    QSqlDatabase db() const;
    QString m_connection;
};

} // namespace quillora
