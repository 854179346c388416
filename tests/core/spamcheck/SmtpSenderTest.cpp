// The SMTP sender against a real SMTP server (aiosmtpd, started here on a free port of
// 127.0.0.1): what arrives is read back by Python's email parser on the server's side.
#include "core/spamcheck/SmtpSender.h"

#include "core/TestFiles.h"
#include "core/app/TextFile.h"
#include "core/app/Texts.h"
#include "core/spamcheck/TestMail.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace quillora;

namespace {

const QString kServerScript =
    QStringLiteral(QUILLORA_SOURCE_DIR "/tests/integration/smtp_server.py");
const QString kNewsletter = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/colorlib-16/");

enum class Mode { Plain, StartTls, Ssl };

// The server process; stopped (its standard input closed) when this goes away.
class SmtpServer {
public:
    SmtpServer(Mode mode, const QString& certificate, const QString& key) {
        QStringList args{kServerScript,      m_out.path(), "--user",
                         "anna@example.com", "--password", "s3cret"};
        if (mode != Mode::Plain)
            args << "--tls" << certificate << key << (mode == Mode::Ssl ? "--ssl" : "--starttls");
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start("/usr/bin/python3", args);
        // Other lines may come first (the library's warnings).
        while (port == 0) {
            while (port == 0 && m_process.canReadLine()) {
                const QByteArray line = m_process.readLine().trimmed();
                if (line.startsWith("READY "))
                    port = line.mid(6).toInt();
            }
            if (port == 0 && !m_process.waitForReadyRead(20000))
                break;
        }
    }
    ~SmtpServer() {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(10000))
            m_process.kill();
    }
    // The summary of the n-th message received.
    QJsonObject received(int n) const {
        return QJsonDocument::fromJson(readBytes(m_out.filePath(QString::number(n) + ".json")))
            .object();
    }

    int port = 0;

private:
    QTemporaryDir m_out;
    QProcess m_process;
};

Account account() {
    Account a;
    a.displayName = "Anna Rossi";
    a.address = "anna@example.com";
    a.smtpServer = "127.0.0.1";
    return a;
}

vmime::shared_ptr<vmime::message> newsletter() {
    TestMail::Content content;
    content.subject = "Spring offer";
    content.body = TextFile::read(kNewsletter + "index.html").text;
    TestMail::Options options;
    options.sender = account();
    options.recipientAddress = "me@example.org";
    options.clientMarks = false;
    options.baseFolder = kNewsletter;
    const TestMail::Result r = TestMail::compose(content, options);
    EXPECT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_GT(r.inlineImages, 0);
    return r.message;
}

int freePort() {
    const int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a);
    socklen_t size = sizeof a;
    ::getsockname(s, reinterpret_cast<sockaddr*>(&a), &size);
    ::close(s);
    return ntohs(a.sin_port);
}

class Certificate {
public:
    Certificate() {
        QProcess openssl;
        openssl.start("openssl", {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", key(),
                                  "-out", cert(), "-days", "2", "-subj", "/CN=127.0.0.1", "-addext",
                                  "subjectAltName=IP:127.0.0.1"});
        ok = openssl.waitForFinished(60000) && openssl.exitCode() == 0;
    }
    QString cert() const { return m_dir.filePath("cert.pem"); }
    QString key() const { return m_dir.filePath("key.pem"); }
    bool ok = false;

private:
    QTemporaryDir m_dir;
};

struct DeliveryCase {
    const char* name;
    Mode mode;
    const char* account; // its security and authentication
    const char* security;
    const char* auth;
    int port = 0;
};

void PrintTo(const DeliveryCase& c, std::ostream* os) {
    *os << c.name;
}

class Delivery : public testing::TestWithParam<DeliveryCase> {};

TEST_P(Delivery, ArrivesWholeWithItsInlineImages) {
    const DeliveryCase& c = GetParam();
    const Certificate certificate;
    ASSERT_TRUE(certificate.ok);
    SmtpServer server(c.mode, certificate.cert(), certificate.key());
    ASSERT_GT(server.port, 0) << "the SMTP server did not start";
    Account a = account();
    a.port = server.port;
    a.security = c.security;
    a.authentication = c.auth;
    smtp::Settings settings = smtp::settingsFor(a, "s3cret");
    settings.to = {"me@example.org"};
    const auto message = newsletter();

    smtp::Result r = smtp::send(message, settings);
    if (c.mode != Mode::Plain) {
        // Made a moment ago, signed by itself: no authority vouches for it.
        ASSERT_EQ(r.outcome, smtp::Outcome::BadCertificate) << r.detail.toStdString();
        ASSERT_EQ(r.certificate.size(), 32);
        EXPECT_TRUE(smtp::describe(r, settings, Texts::builtIn("English"))
                        .startsWith("The server's certificate failed verification"));
        EXPECT_TRUE(server.received(1).isEmpty());
        settings.trustedCertificate = r.certificate; // trusted once
        r = smtp::send(message, settings);
    }
    ASSERT_EQ(r.outcome, smtp::Outcome::Sent) << r.detail.toStdString();
    EXPECT_EQ(r.reply, "250 2.0.0 Ok: queued as test-1");
    EXPECT_FALSE(r.transcript.join('\n').contains("s3cret"));

    const QJsonObject got = server.received(1);
    ASSERT_FALSE(got.isEmpty()) << "nothing arrived";
    EXPECT_EQ(got["defects"].toArray().size(), 0) << QJsonDocument(got).toJson().toStdString();
    EXPECT_EQ(got["mail_from"].toString(), "anna@example.com");
    EXPECT_EQ(got["rcpt_tos"].toArray(), QJsonArray{"me@example.org"});
    EXPECT_EQ(got["tls"].toBool(), c.mode != Mode::Plain);
    EXPECT_TRUE(got["login"].toBool());
    EXPECT_EQ(got["subject"].toString(), "Spring offer");
    QSet<QString> imageIds, referenced;
    for (const auto& p : got["parts"].toArray()) {
        const QJsonObject part = p.toObject();
        if (part["type"].toString().startsWith("image/")) {
            EXPECT_GT(part["size"].toInt(), 0);
            imageIds << part["cid"].toString();
        }
    }
    for (const auto& id : got["html_cids"].toArray())
        referenced << id.toString();
    EXPECT_EQ(imageIds.size(), 7) << "every distinct local picture of the newsletter, once";
    EXPECT_EQ(referenced, imageIds);
}

INSTANTIATE_TEST_SUITE_P(
    Servers, Delivery,
    testing::Values(DeliveryCase{"PlainLogin", Mode::Plain, "", "none", "login"},
                    DeliveryCase{"StartTlsPlain", Mode::StartTls, "", "starttls", "plain"},
                    DeliveryCase{"SslLogin", Mode::Ssl, "", "ssl", "login"},
                    DeliveryCase{"AutoOnAPlainServer", Mode::Plain, "", "auto", "plain"},
                    DeliveryCase{"AutoTakesStartTls", Mode::StartTls, "", "auto", "login"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SmtpSender, AWrongPasswordIsARefusedLogin) {
    SmtpServer server(Mode::Plain, {}, {});
    ASSERT_GT(server.port, 0);
    Account a = account();
    a.port = server.port;
    a.security = "none";
    a.authentication = "plain";
    smtp::Settings settings = smtp::settingsFor(a, "guess");
    settings.to = {"me@example.org"};
    const smtp::Result r = smtp::send(newsletter(), settings);
    EXPECT_EQ(r.outcome, smtp::Outcome::LoginRefused) << r.detail.toStdString();
    EXPECT_TRUE(smtp::describe(r, settings, Texts::builtIn("Italiano"))
                    .startsWith("Il server ha rifiutato l'accesso"));
    EXPECT_TRUE(server.received(1).isEmpty());
}

TEST(SmtpSender, AClosedPortIsUnreachable) {
    Account a = account();
    a.port = freePort();
    a.security = "none";
    a.authentication = "none";
    smtp::Settings settings = smtp::settingsFor(a, {});
    settings.to = {"me@example.org"};
    settings.timeoutSeconds = 5;
    const smtp::Result r = smtp::send(newsletter(), settings);
    EXPECT_EQ(r.outcome, smtp::Outcome::Unreachable) << r.detail.toStdString();
    EXPECT_TRUE(
        smtp::describe(r, settings, Texts::builtIn("English"))
            .startsWith(
                QString("The server 127.0.0.1 cannot be reached on port %1: ").arg(a.port)));
}

// A server that takes the connection and never greets: only cancelling ends the wait (the
// time limit is far away), and it says Cancelled, not Unreachable.
TEST(SmtpSender, CancellingEndsAWaitForASilentServer) {
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    ASSERT_EQ(::listen(listener, 1), 0);
    socklen_t size = sizeof addr;
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&addr), &size);
    std::atomic_bool cancel = false;
    int accepted = -1;
    std::thread silent([&] {
        accepted = ::accept(listener, nullptr, nullptr);
        cancel = true;
    });
    Account a = account();
    a.port = ntohs(addr.sin_port);
    a.security = "none";
    a.authentication = "none";
    smtp::Settings settings = smtp::settingsFor(a, {});
    settings.to = {"me@example.org"};
    settings.timeoutSeconds = 600;
    const smtp::Result r = smtp::send(newsletter(), settings, &cancel);
    silent.join();
    ::close(accepted);
    ::close(listener);
    EXPECT_EQ(r.outcome, smtp::Outcome::Cancelled) << r.detail.toStdString();
}

} // namespace
