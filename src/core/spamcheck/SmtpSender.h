#pragma once

#include "core/app/AccountStore.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>

#include <vmime/vmime.hpp>

namespace quillora {
class Texts;
}

// Sends an e-mail that is already composed through an account's SMTP server with vmime's SMTP
// transport: plain, STARTTLS or SSL/TLS, AUTH LOGIN or PLAIN, the server's certificate
// verified against the system's authorities. Blocking: callers run it away from the window's
// thread and stop it through the cancel flag.
namespace quillora::smtp {

// Auto: STARTTLS when the server offers it, plain otherwise.
enum class Security { None, StartTls, Ssl, Auto };
enum class Auth { None, Plain, Login };

struct Settings {
    QString host;
    int port = 587;
    Security security = Security::StartTls;
    Auth auth = Auth::Login;
    QString user;
    QString password; // only ever in memory
    QString from;     // the envelope sender
    QStringList to;   // the envelope recipients
    // The SHA-256 fingerprint of a server certificate the user chose to trust for this send.
    QByteArray trustedCertificate;
    // Waiting for the server longer than this ends the send (connecting included).
    int timeoutSeconds = 30;
    // PEM file of the authorities that certificates are checked against.
    QString authorities = QStringLiteral("/etc/ssl/certs/ca-certificates.crt");
};

// The account's server, port, security and authentication; the user name is its address.
Settings settingsFor(const Account& account, const QString& password);

enum class Outcome {
    Sent,
    LoginRefused,   // the server refused the user name or password
    Unreachable,    // no connection: unknown host, refused, timed out
    BadCertificate, // the certificate failed verification (see Result::certificate)
    Refused,        // the server answered a command with an error (sender, recipient, data)
    Cancelled,
    Failed, // anything else, described in detail
};

struct Result {
    Outcome outcome = Outcome::Failed;
    QString reply;  // the server's last answer
    QString detail; // what went wrong, in the library's words
    // BadCertificate: the SHA-256 fingerprint to pass back as Settings::trustedCertificate to
    // trust that certificate once.
    QByteArray certificate;
    QStringList transcript; // the conversation, the password left out
    bool ok() const { return outcome == Outcome::Sent; }
};

// Sends the message; the cancel flag may be set from any thread.
Result send(const vmime::shared_ptr<vmime::message>& message, const Settings& settings,
            const std::atomic_bool* cancel = nullptr);

// The outcome in the user's language, naming the server where that helps.
QString describe(const Result& result, const Settings& settings, const Texts& texts);

} // namespace quillora::smtp
