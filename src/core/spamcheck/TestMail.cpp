#include "core/spamcheck/TestMail.h"

#include "core/app/Folders.h"
#include "core/app/TextFile.h"
#include "core/message/MessageFile.h"
#include "core/spamcheck/ReadCounter.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QUuid>

#include <gumbo.h>
#include <mutex>
#include <vmime/platforms/posix/posixHandler.hpp>

namespace quillora::TestMail {

namespace {

const vmime::charset& utf8() {
    // Given explicitly: vmime would otherwise take the locale's charset (ASCII under "C").
    static const vmime::charset cs(vmime::charsets::UTF_8);
    return cs;
}

void ensurePlatform() {
    static std::once_flag once;
    std::call_once(once,
                   [] { vmime::platform::setHandler<vmime::platforms::posix::posixHandler>(); });
}

std::string std8(const QString& s) {
    return s.toStdString();
}

vmime::text textOf(const QString& s) {
    vmime::text t;
    t.createFromString(std8(s), utf8());
    return t;
}

vmime::mailbox mailboxOf(const QString& name, const QString& address) {
    const vmime::emailAddress email(std8(address.trimmed()));
    if (name.trimmed().isEmpty())
        return vmime::mailbox(email);
    return vmime::mailbox(textOf(name.trimmed()), email);
}

QString removeTags(QString line, const char* open, const char* close) {
    return line.remove(QLatin1String(open)).remove(QLatin1String(close)).trimmed();
}

vmime::mediaType mediaTypeOf(const QString& path) {
    const QString name = QMimeDatabase().mimeTypeForFile(path).name();
    const qsizetype slash = name.indexOf(u'/');
    if (slash <= 0)
        return vmime::mediaType("application", "octet-stream");
    return vmime::mediaType(std8(name.left(slash)), std8(name.mid(slash + 1)));
}

// A host name fit for the right side of a Message-ID.
QString machinePart(const QString& name) {
    QString out;
    for (QChar c : name) {
        if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
            c == u'-' || c == u'.')
            out += c;
    }
    while (out.startsWith(u'.'))
        out.remove(0, 1);
    while (out.endsWith(u'.'))
        out.chop(1);
    return out.isEmpty() ? QString::fromLatin1(kDefaultMachine) : out;
}

void addHeader(vmime::message& msg, const char* name, const std::string& value) {
    msg.getHeader()->appendField(vmime::headerFieldFactory::getInstance()->create(name, value));
}

} // namespace

ReadResult readLines(const QStringList& lines) {
    ReadResult r;
    const auto endsAt = [&](qsizetype from, QLatin1String tag) {
        for (qsizetype i = from; i < lines.size(); ++i) {
            if (lines[i].trimmed() == tag)
                return i;
        }
        return qsizetype(-1);
    };
    const qsizetype endAllg = endsAt(2, QLatin1String("[<END-ALLG>]"));
    const qsizetype endMess = endAllg < 0 ? -1 : endsAt(endAllg + 1, QLatin1String("[<END-MESS>]"));
    if (lines.size() < 2 || endMess < 0) {
        r.error = QStringLiteral("not a message file: the attachment or body section is missing");
        return r;
    }
    r.content.subject = removeTags(lines[0], "[<INI-SUBJ>]", "[<END-SUBJ>]");
    r.content.priority = removeTags(lines[1], "[<INI-PRIO>]", "[<END-PRIO>]");
    for (qsizetype i = 2; i < endAllg; ++i) {
        const QString path = lines[i].trimmed();
        if (!path.isEmpty() && path != u"[<INI-ALLG>]")
            r.content.attachments << path;
    }
    qsizetype first = endAllg + 1;
    if (first < endMess && lines[first].trimmed() == u"[<INI-MESS>]")
        ++first;
    r.content.body = lines.mid(first, endMess - first).join(QStringLiteral("\r\n"));
    return r;
}

ReadResult readFile(const QString& path) {
    QStringList lines;
    const TextFile::Decoded d = TextFile::readLines(path, lines);
    if (!d.ok()) {
        ReadResult r;
        r.error = TextFile::describe(d.error);
        return r;
    }
    return readLines(lines);
}

ReadResult readMessageFile(const QString& path, const QString& restoreFolder,
                           QStringList* warnings) {
    ReadResult r;
    const MessageFile::ReadResult file = MessageFile::read(path, restoreFolder);
    if (!file.ok()) {
        r.error = file.error;
        return r;
    }
    if (warnings)
        *warnings = file.content.warnings;
    const QString folder = withTrailingSlash(restoreFolder);
    r.content.subject = file.content.subject.trimmed();
    r.content.priority = file.content.priority.trimmed();
    if (file.content.version >= 4) {
        r.content.body = References::redirectForPreview(file.content.body, folder);
        for (const QString& stored : file.content.storedAttachments) {
            const std::optional<QString> name = References::safeFileName(stored.trimmed());
            if (!name) {
                r.error = QStringLiteral("the attachment %1 has no usable file name").arg(stored);
                return r;
            }
            r.content.attachments << folder + *name;
        }
    } else {
        // An older file carries no copies: its paths are used as they stand.
        r.content.body = file.content.body;
        for (const QString& stored : file.content.storedAttachments)
            r.content.attachments << stored.trimmed();
    }
    return r;
}

QString plainText(const QString& html) {
    const QByteArray bytes = html.toUtf8();
    GumboOutput* out =
        gumbo_parse_with_options(&kGumboDefaultOptions, bytes.constData(), size_t(bytes.size()));
    QString text;
    bool pendingSpace = false;
    const auto newline = [&](int count) {
        while (text.endsWith(u' '))
            text.chop(1);
        int have = 0;
        for (qsizetype i = text.size() - 1; i >= 0 && text[i] == u'\n' && have < count; --i)
            ++have;
        if (!text.isEmpty())
            text += QString(count - have, u'\n');
        pendingSpace = false;
    };
    const auto isBlock = [](GumboTag t) {
        switch (t) {
        case GUMBO_TAG_P:
        case GUMBO_TAG_DIV:
        case GUMBO_TAG_TABLE:
        case GUMBO_TAG_TR:
        case GUMBO_TAG_UL:
        case GUMBO_TAG_OL:
        case GUMBO_TAG_LI:
        case GUMBO_TAG_H1:
        case GUMBO_TAG_H2:
        case GUMBO_TAG_H3:
        case GUMBO_TAG_H4:
        case GUMBO_TAG_H5:
        case GUMBO_TAG_H6:
        case GUMBO_TAG_BLOCKQUOTE:
        case GUMBO_TAG_PRE:
        case GUMBO_TAG_HR:
        case GUMBO_TAG_CENTER:
        case GUMBO_TAG_SECTION:
        case GUMBO_TAG_ARTICLE:
        case GUMBO_TAG_HEADER:
        case GUMBO_TAG_FOOTER:
        case GUMBO_TAG_DL:
        case GUMBO_TAG_DT:
        case GUMBO_TAG_DD:
        case GUMBO_TAG_FORM:
        case GUMBO_TAG_ADDRESS:
            return true;
        default:
            return false;
        }
    };
    // Iterative walk with explicit "leave" marks, so deep nesting cannot exhaust the stack.
    struct Step {
        const GumboNode* node;
        bool leaving;
    };
    std::vector<Step> pending{{out->root, false}};
    while (!pending.empty()) {
        const Step step = pending.back();
        pending.pop_back();
        const GumboNode* node = step.node;
        if (node->type == GUMBO_NODE_TEXT || node->type == GUMBO_NODE_CDATA) {
            const QString chunk = QString::fromUtf8(node->v.text.text);
            for (QChar c : chunk) {
                if (c.isSpace()) {
                    pendingSpace = true;
                    continue;
                }
                if (pendingSpace && !text.isEmpty() && !text.endsWith(u'\n') &&
                    !text.endsWith(u'\t'))
                    text += u' ';
                pendingSpace = false;
                text += c;
            }
            continue;
        }
        if (node->type != GUMBO_NODE_ELEMENT)
            continue;
        const GumboTag tag = node->v.element.tag;
        if (step.leaving) {
            if (isBlock(tag))
                newline(tag == GUMBO_TAG_P ? 2 : 1);
            else if (tag == GUMBO_TAG_TD || tag == GUMBO_TAG_TH)
                pendingSpace = true;
            continue;
        }
        if (tag == GUMBO_TAG_HEAD || tag == GUMBO_TAG_SCRIPT || tag == GUMBO_TAG_STYLE ||
            tag == GUMBO_TAG_TEMPLATE || tag == GUMBO_TAG_TITLE)
            continue;
        if (tag == GUMBO_TAG_BR) {
            newline(1);
            continue;
        }
        if (isBlock(tag))
            newline(tag == GUMBO_TAG_P ? 2 : 1);
        pending.push_back({node, true});
        const GumboVector& children = node->v.element.children;
        for (unsigned i = children.length; i > 0; --i)
            pending.push_back({static_cast<const GumboNode*>(children.data[i - 1]), false});
    }
    gumbo_destroy_output(&kGumboDefaultOptions, out);
    while (text.endsWith(u'\n') || text.endsWith(u' '))
        text.chop(1);
    return text;
}

Result compose(const Content& content, const Options& options) {
    ensurePlatform();
    Result r;
    try {
        vmime::messageBuilder mb;
        mb.setExpeditor(mailboxOf(options.sender.displayName, options.sender.address));
        // A test mail without a recipient goes to its sender, as a test send would.
        mb.getRecipients().appendAddress(vmime::make_shared<vmime::mailbox>(
            options.recipientAddress.trimmed().isEmpty()
                ? mailboxOf(options.sender.displayName, options.sender.address)
                : mailboxOf(options.recipientName, options.recipientAddress)));
        mb.setSubject(textOf(content.subject));

        for (const QString& path : content.attachments) {
            QFile f(path);
            if (!f.open(QIODevice::ReadOnly)) {
                r.error = QStringLiteral("the attachment %1 cannot be read").arg(path);
                return r;
            }
            const QByteArray data = f.readAll();
            auto handler = vmime::make_shared<vmime::stringContentHandler>(
                std::string(data.constData(), size_t(data.size())));
            const QString name = References::fileNameOf(path);
            mb.appendAttachment(vmime::make_shared<vmime::fileAttachment>(
                handler, vmime::word(std8(name), utf8()), mediaTypeOf(path)));
        }

        mb.constructTextPart(
            vmime::mediaType(vmime::mediaTypes::TEXT, vmime::mediaTypes::TEXT_HTML));
        auto part = vmime::dynamicCast<vmime::htmlTextPart>(mb.getTextPart());
        part->setCharset(utf8());

        // Inline images: each distinct local file once, every reference to it the same cid.
        References::ReferenceWalker walker(content.body);
        QHash<QString, QString> cids; // path -> "cid:..."; empty value: the file is missing
        std::vector<References::Edit> edits;
        for (const References::Reference& ref : walker.references()) {
            const References::Resolved res =
                References::normalise(ref.value, options.baseFolder, options.style);
            if (!res.isLocal())
                continue;
            auto it = cids.find(res.path);
            if (it == cids.end()) {
                QString cid;
                QFile f(res.path);
                if (QFileInfo(res.path).isFile() && f.open(QIODevice::ReadOnly)) {
                    const QByteArray data = f.readAll();
                    auto obj =
                        part->addObject(vmime::make_shared<vmime::stringContentHandler>(
                                            std::string(data.constData(), size_t(data.size()))),
                                        mediaTypeOf(res.path));
                    cid = QString::fromStdString(obj->getReferenceId());
                    ++r.inlineImages;
                } else {
                    r.missingImages << res.path;
                }
                it = cids.insert(res.path, cid);
            }
            if (!it->isEmpty() && ref.inSource())
                edits.push_back(References::Edit::of(ref, *it));
        }
        QString html = walker.rewrite(edits);
        const QString text = plainText(html);

        html = ReadCounter::InserisciTag_READCOUNTER(html, options.readCounter);
        html = ReadCounter::EliminaTag_DESIGNTIMESP(html);
        html = ReadCounter::SostituisciTag_READCOUNTER(html, options.readCounter,
                                                       options.readCounterHost);
        r.html = html;
        part->setText(vmime::make_shared<vmime::stringContentHandler>(std8(html)));
        part->setPlainText(vmime::make_shared<vmime::stringContentHandler>(std8(text)));

        auto msg = mb.construct();
        vmime::shared_ptr<vmime::header> hdr = msg->getHeader();
        hdr->MessageId()->setValue(
            vmime::messageId(std8(QUuid::createUuid().toString(QUuid::Id128)),
                             std8(machinePart(options.machineName))));
        if (content.priority == u"HI")
            vmime::misc::importanceHelper::setImportance(
                msg, vmime::misc::importanceHelper::IMPORTANCE_HIGHEST);
        else if (content.priority == u"LW")
            vmime::misc::importanceHelper::setImportance(
                msg, vmime::misc::importanceHelper::IMPORTANCE_LOWEST);
        if (!options.replyTo.trimmed().isEmpty())
            hdr->ReplyTo()->setValue(mailboxOf(QString(), options.replyTo));
        if (options.readReceipt)
            vmime::mdn::MDNHelper::attachMDNRequest(
                msg, mailboxOf(options.sender.displayName, options.sender.address));
        if (options.clientMarks) {
            addHeader(*msg, kMimeOleHeader, kMimeOleValue);
            addHeader(*msg, "X-Mailer", kMailerValue);
        }
        r.message = msg;
    } catch (const vmime::exception& e) {
        r.error = QString::fromStdString(e.what());
        r.message.reset();
    }
    return r;
}

QByteArray toEml(const vmime::message& message) {
    ensurePlatform();
    std::string out;
    vmime::utility::outputStreamStringAdapter os(out);
    message.generate(os);
    return QByteArray(out.data(), qsizetype(out.size()));
}

bool writeEml(const vmime::message& message, const QString& path, QString* error) {
    QSaveFile f(path);
    QByteArray bytes;
    try {
        bytes = toEml(message);
    } catch (const vmime::exception& e) {
        if (error)
            *error = QString::fromStdString(e.what());
        return false;
    }
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size() || !f.commit()) {
        if (error)
            *error = f.errorString();
        return false;
    }
    return true;
}

} // namespace quillora::TestMail
