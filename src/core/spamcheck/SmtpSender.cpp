#include "core/spamcheck/SmtpSender.h"

#include "core/app/Texts.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <mutex>
#include <sstream>
#include <vmime/platforms/posix/posixHandler.hpp>

namespace quillora::smtp {

namespace {

using namespace Qt::StringLiterals;
namespace cert = vmime::security::cert;

QString fromStd(const std::string& s) {
    return QString::fromUtf8(s.data(), qsizetype(s.size())).trimmed();
}

// Ends every wait for the server when the user cancels or the server keeps silent too long.
class Deadline : public vmime::net::timeoutHandler {
public:
    Deadline(const std::atomic_bool* cancel, int seconds) : m_cancel(cancel), m_ms(seconds * 1000) {
        m_clock.start();
    }
    bool isTimeOut() override { return (m_cancel && m_cancel->load()) || m_clock.elapsed() > m_ms; }
    void resetTimeOut() override { m_clock.restart(); }
    bool handleTimeOut() override { return false; } // give up

private:
    const std::atomic_bool* m_cancel;
    const qint64 m_ms;
    QElapsedTimer m_clock;
};

class DeadlineFactory : public vmime::net::timeoutHandlerFactory {
public:
    DeadlineFactory(const std::atomic_bool* cancel, int seconds)
        : m_cancel(cancel), m_seconds(seconds) {}
    vmime::shared_ptr<vmime::net::timeoutHandler> create() override {
        return vmime::make_shared<Deadline>(m_cancel, m_seconds);
    }

private:
    const std::atomic_bool* m_cancel;
    const int m_seconds;
};

// The conversation, for the dialog's log. The library reports the login exchange and the
// message by their sizes only; an AUTH command's own argument is left out here as well.
// What the library says about its own steps ("Connecting to ...") is kept as a note.
struct Transcript {
    std::mutex lock;
    QStringList lines;
    QString lastReply;

    void sent(const std::string& raw) {
        const QString line = fromStd(raw);
        const std::lock_guard guard(lock);
        static const QRegularExpression command(
            u"^(EHLO|HELO|MAIL FROM|RCPT TO|DATA|QUIT|STARTTLS|RSET|NOOP|BDAT)\\b|^[.{]"_s,
            QRegularExpression::CaseInsensitiveOption);
        if (line.startsWith(u"AUTH "_s, Qt::CaseInsensitive))
            lines << u"C: "_s + line.section(u' ', 0, 1) +
                         (line.count(u' ') > 1 ? u" ***"_s : u""_s);
        else if (command.match(line).hasMatch())
            lines << u"C: "_s + line;
        else
            lines << u"   ("_s + line + u")"_s;
    }
    void received(const std::string& raw) {
        const QString line = fromStd(raw);
        const std::lock_guard guard(lock);
        lines << u"S: "_s + line;
        lastReply = line;
    }
    QString reply() {
        const std::lock_guard guard(lock);
        return lastReply;
    }
};

class Tracer : public vmime::net::tracer {
public:
    explicit Tracer(std::shared_ptr<Transcript> t) : m_t(std::move(t)) {}
    void traceSend(const vmime::string& line) override { m_t->sent(line); }
    void traceReceive(const vmime::string& line) override { m_t->received(line); }

private:
    std::shared_ptr<Transcript> m_t;
};

class TracerFactory : public vmime::net::tracerFactory {
public:
    explicit TracerFactory(std::shared_ptr<Transcript> t) : m_t(std::move(t)) {}
    vmime::shared_ptr<vmime::net::tracer> create(vmime::shared_ptr<vmime::net::service>,
                                                 const int) override {
        return vmime::make_shared<Tracer>(m_t);
    }

private:
    std::shared_ptr<Transcript> m_t;
};

// The system's authorities, and a certificate the user trusts for this send. A refusal is
// remembered with the certificate's fingerprint, so the user can be asked about it.
class Verifier : public cert::certificateVerifier {
public:
    Verifier(const QString& authorities, QByteArray trusted) : m_trusted(std::move(trusted)) {
        m_default.setX509RootCAs(loadAuthorities(authorities));
    }

    void verify(vmime::shared_ptr<cert::certificateChain> chain,
                const vmime::string& hostname) override {
        vmime::shared_ptr<cert::X509Certificate> leaf;
        if (chain && chain->getCount() > 0)
            leaf = vmime::dynamicCast<cert::X509Certificate>(chain->getAt(0));
        QByteArray fingerprint;
        if (leaf) {
            const vmime::byteArray der = leaf->getEncoded();
            fingerprint = QCryptographicHash::hash(
                QByteArrayView(reinterpret_cast<const char*>(der.data()), qsizetype(der.size())),
                QCryptographicHash::Sha256);
        }
        if (!m_trusted.isEmpty() && fingerprint == m_trusted)
            return;
        try {
            m_default.verify(chain, hostname);
        } catch (const vmime::exception& e) {
            refused = true;
            refusedFingerprint = fingerprint;
            reason = fromStd(e.what());
            throw;
        }
    }

    bool refused = false;
    QByteArray refusedFingerprint;
    QString reason;

private:
    static std::vector<vmime::shared_ptr<cert::X509Certificate>>
    loadAuthorities(const QString& path) {
        std::vector<vmime::shared_ptr<cert::X509Certificate>> out;
        QFile f(path);
        if (!f.open(QIODevice::ReadOnly))
            return out;
        const QByteArray pem = f.readAll();
        static const QByteArray begin("-----BEGIN CERTIFICATE-----");
        static const QByteArray end("-----END CERTIFICATE-----");
        qsizetype at = 0;
        while ((at = pem.indexOf(begin, at)) >= 0) {
            const qsizetype stop = pem.indexOf(end, at);
            if (stop < 0)
                break;
            const QByteArray one = pem.mid(at, stop + end.size() - at);
            if (auto c = cert::X509Certificate::import(
                    reinterpret_cast<const vmime::byte_t*>(one.constData()), size_t(one.size())))
                out.push_back(c);
            at = stop + end.size();
        }
        return out;
    }

    cert::defaultCertificateVerifier m_default;
    QByteArray m_trusted;
};

// Offers the server only the mechanism the account names.
class Authenticator : public vmime::security::sasl::defaultSASLAuthenticator {
public:
    explicit Authenticator(std::string mechanism) : m_mechanism(std::move(mechanism)) {}
    const std::vector<vmime::shared_ptr<vmime::security::sasl::SASLMechanism>>
    getAcceptableMechanisms(
        const std::vector<vmime::shared_ptr<vmime::security::sasl::SASLMechanism>>& available,
        vmime::shared_ptr<vmime::security::sasl::SASLMechanism>) const override {
        std::vector<vmime::shared_ptr<vmime::security::sasl::SASLMechanism>> out;
        for (const auto& m : available) {
            if (vmime::utility::stringUtils::toUpper(m->getName()) == m_mechanism)
                out.push_back(m);
        }
        return out;
    }

private:
    std::string m_mechanism;
};

void initialisePlatform() {
    static std::once_flag once;
    std::call_once(once,
                   [] { vmime::platform::setHandler<vmime::platforms::posix::posixHandler>(); });
}

vmime::mailbox mailboxOf(const QString& address) {
    return vmime::mailbox(vmime::emailAddress(address.trimmed().toStdString()));
}

} // namespace

Settings settingsFor(const Account& account, const QString& password) {
    Settings s;
    s.host = account.smtpServer.trimmed();
    s.port = account.port;
    const QString security = account.security.toLower();
    s.security = security == u"ssl"_s        ? Security::Ssl
                 : security == u"starttls"_s ? Security::StartTls
                 : security == u"auto"_s     ? Security::Auto
                                             : Security::None;
    const QString auth = account.authentication.toLower();
    s.auth = auth == u"plain"_s ? Auth::Plain : auth == u"login"_s ? Auth::Login : Auth::None;
    s.user = account.address;
    s.password = password;
    s.from = account.address;
    return s;
}

Result send(const vmime::shared_ptr<vmime::message>& message, const Settings& settings,
            const std::atomic_bool* cancel) {
    initialisePlatform();
    Result result;
    auto transcript = std::make_shared<Transcript>();
    auto verifier = vmime::make_shared<Verifier>(settings.authorities, settings.trustedCertificate);
    const auto finish = [&](Outcome outcome, const QString& detail = {}) {
        result.outcome = (cancel && cancel->load()) ? Outcome::Cancelled : outcome;
        result.detail = detail;
        result.reply = transcript->reply();
        const std::lock_guard guard(transcript->lock);
        result.transcript = transcript->lines;
        return result;
    };
    if (!message)
        return finish(Outcome::Failed, u"no message"_s);
    if (settings.host.isEmpty() || settings.to.isEmpty() || settings.from.isEmpty())
        return finish(Outcome::Failed, u"no server, sender or recipient"_s);

    vmime::shared_ptr<vmime::net::transport> transport;
    try {
        auto session = vmime::net::session::create();
        const vmime::utility::url url(settings.security == Security::Ssl ? "smtps" : "smtp",
                                      settings.host.toStdString(), settings.port);
        transport = session->getTransport(url);
        transport->setProperty("connection.tls", settings.security == Security::StartTls ||
                                                     settings.security == Security::Auto);
        transport->setProperty("connection.tls.required", settings.security == Security::StartTls);
        transport->setProperty("options.need-authentication", settings.auth != Auth::None);
        if (settings.auth != Auth::None) {
            transport->setAuthenticator(vmime::make_shared<Authenticator>(
                settings.auth == Auth::Plain ? "PLAIN" : "LOGIN"));
            transport->setProperty("auth.username", settings.user.toStdString());
            transport->setProperty("auth.password", settings.password.toStdString());
            // The mechanism is the account's: no silent fallback to another one.
            transport->setProperty("options.sasl.fallback", false);
        }
        transport->setCertificateVerifier(verifier);
        transport->setTimeoutHandlerFactory(
            vmime::make_shared<DeadlineFactory>(cancel, settings.timeoutSeconds));
        transport->setTracerFactory(vmime::make_shared<TracerFactory>(transcript));

        std::ostringstream bytes;
        vmime::utility::outputStreamAdapter out(bytes);
        message->generate(out);
        const std::string data = bytes.str();

        transport->connect();
        if (cancel && cancel->load())
            return finish(Outcome::Cancelled);
        vmime::mailboxList recipients;
        for (const QString& to : settings.to)
            recipients.appendMailbox(vmime::make_shared<vmime::mailbox>(mailboxOf(to)));
        vmime::utility::inputStreamStringAdapter in(data);
        transport->send(mailboxOf(settings.from), recipients, in, data.size());
        result.reply = transcript->reply();
        try {
            transport->disconnect();
        } catch (const vmime::exception&) {
            // The message is through; a lost goodbye changes nothing.
        }
        const QString reply = result.reply;
        finish(Outcome::Sent);
        result.reply = reply;
        return result;
    } catch (const vmime::exceptions::authentication_error& e) {
        return finish(Outcome::LoginRefused,
                      fromStd(e.response().empty() ? e.what() : e.response()));
    } catch (const vmime::exceptions::command_error& e) {
        // A refused AUTH exchange comes back as a command error on some servers.
        const QString reply = fromStd(e.response());
        const bool auth =
            QString::fromStdString(e.command()).startsWith(u"AUTH"_s, Qt::CaseInsensitive) ||
            reply.startsWith(u"535"_s) || reply.startsWith(u"534"_s);
        return finish(auth ? Outcome::LoginRefused : Outcome::Refused, reply);
    } catch (const vmime::exception& e) {
        if (verifier->refused) {
            result.certificate = verifier->refusedFingerprint;
            return finish(Outcome::BadCertificate, verifier->reason);
        }
        const QString what = fromStd(e.what());
        const bool neverConnected = !transport || !transport->isConnected();
        const bool network = dynamic_cast<const vmime::exceptions::socket_exception*>(&e) ||
                             dynamic_cast<const vmime::exceptions::connection_error*>(&e) ||
                             dynamic_cast<const vmime::exceptions::operation_timed_out*>(&e) ||
                             dynamic_cast<const vmime::exceptions::connection_greeting_error*>(&e);
        // A server that takes the connection but never greets counts as unreachable too.
        if (network && (neverConnected || transcript->reply().isEmpty()))
            return finish(Outcome::Unreachable, what);
        if (auto* t = dynamic_cast<const vmime::exceptions::tls_exception*>(&e))
            return finish(Outcome::BadCertificate, fromStd(t->what()));
        return finish(Outcome::Failed, what);
    } catch (const std::exception& e) {
        return finish(Outcome::Failed, QString::fromUtf8(e.what()));
    }
}

QString describe(const Result& result, const Settings& settings, const Texts& texts) {
    const auto text = [&](const char* key) {
        const QString t = texts.get(QString::fromLatin1(key));
        return t.isEmpty() ? Texts::builtIn(u"English"_s).get(QString::fromLatin1(key)) : t;
    };
    switch (result.outcome) {
    case Outcome::Sent:
        return text("sndSent").arg(result.reply);
    case Outcome::LoginRefused:
        return text("sndLoginRefused").arg(result.detail.isEmpty() ? result.reply : result.detail);
    case Outcome::Unreachable:
        return text("sndUnreachable").arg(settings.host).arg(settings.port).arg(result.detail);
    case Outcome::BadCertificate:
        return text("sndBadCertificate").arg(result.detail);
    case Outcome::Refused:
        return text("sndRefused").arg(result.detail.isEmpty() ? result.reply : result.detail);
    case Outcome::Cancelled:
        return text("sndCancelled");
    case Outcome::Failed:
        break;
    }
    return text("sndFailed").arg(result.detail);
}

} // namespace quillora::smtp
