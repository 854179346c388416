#include "core/message/MailImport.h"

#include "core/message/Charset.h"
#include "core/message/EncapsulatedRtf.h"
#include "core/message/PictureFormat.h"
#include "core/message/References.h"
#include "core/message/TextImport.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QSet>
#include <QUrl>

#include <vmime/vmime.hpp>

namespace quillora::MailImport {

namespace {

// Nested multiparts deeper than this are no real mail; the limit only guards the recursion.
constexpr int kMaxDepth = 32;
constexpr qsizetype kMaxNameLength = 120;

QString fromStd(const std::string& s) {
    return QString::fromUtf8(s.data(), qsizetype(s.size()));
}

QString utf8Text(const vmime::word& w) {
    try {
        return fromStd(w.getConvertedText(vmime::charset(vmime::charsets::UTF_8)));
    } catch (const vmime::exception&) {
        return fromStd(w.getBuffer());
    }
}

QByteArray rawFieldValue(const vmime::header& header, const char* name) {
    const vmime::shared_ptr<vmime::headerField> field = header.findField(name);
    if (!field)
        return {};
    std::ostringstream text;
    vmime::utility::outputStreamAdapter out(text);
    field->getValue()->generate(out);
    return QByteArray::fromStdString(text.str()).trimmed();
}

QString parameter(const vmime::header& header, const char* fieldName, const char* name) {
    const auto field =
        vmime::dynamicCast<vmime::parameterizedHeaderField>(header.findField(fieldName));
    if (!field)
        return {};
    const vmime::shared_ptr<vmime::parameter> p = field->findParameter(name);
    return p ? utf8Text(p->getValue()).trimmed() : QString();
}

// The transfer encoding as the header names it; names vmime does not know are no encoding.
QByteArray decodeTransfer(const vmime::body& body, const vmime::header& header) {
    std::string raw;
    {
        vmime::utility::outputStreamStringAdapter out(raw);
        body.getContents()->extractRaw(out);
    }
    const QByteArray name = rawFieldValue(header, "Content-Transfer-Encoding").toLower();
    const char* decoder = nullptr;
    if (name == "base64")
        decoder = "base64";
    else if (name == "quoted-printable")
        decoder = "quoted-printable";
    else if (name == "x-uuencode" || name == "uuencode" || name == "x-uue")
        decoder = "uuencode";
    if (!decoder)
        return QByteArray::fromStdString(raw);
    try {
        std::string decoded;
        vmime::utility::inputStreamStringAdapter in(raw);
        vmime::utility::outputStreamStringAdapter out(decoded);
        vmime::utility::encoder::encoderFactory::getInstance()->create(decoder)->decode(in, out);
        return QByteArray::fromStdString(decoded);
    } catch (const vmime::exception&) {
        return QByteArray::fromStdString(raw);
    }
}

struct Leaf {
    vmime::shared_ptr<const vmime::bodyPart> part;
    QString type; // "text/html", lower case
    QString disposition;
    QString fileName;
    QString contentId; // without angle brackets
    bool inAlternative = false;
};

void collect(const vmime::shared_ptr<const vmime::bodyPart>& part, bool inAlternative, int depth,
             std::vector<Leaf>& leaves) {
    const vmime::shared_ptr<const vmime::body> body = part->getBody();
    const vmime::mediaType media = body->getContentType();
    const QString type = fromStd(media.getType()).toLower();
    const QString sub = fromStd(media.getSubType()).toLower();
    if (type == QLatin1String("multipart") || body->getPartCount() > 0) {
        if (depth >= kMaxDepth)
            return;
        const bool alternative = inAlternative || sub == QLatin1String("alternative");
        for (size_t i = 0; i < body->getPartCount(); ++i)
            collect(body->getPartAt(i), alternative, depth + 1, leaves);
        return;
    }
    const vmime::header& header = *part->getHeader();
    Leaf leaf;
    leaf.part = part;
    leaf.type = type + u'/' + sub;
    leaf.inAlternative = inAlternative;
    leaf.disposition = QString::fromLatin1(rawFieldValue(header, "Content-Disposition"))
                           .section(u';', 0, 0)
                           .trimmed()
                           .toLower();
    leaf.fileName = parameter(header, "Content-Disposition", "filename");
    if (leaf.fileName.isEmpty())
        leaf.fileName = parameter(header, "Content-Type", "name");
    QString id = QString::fromLatin1(rawFieldValue(header, "Content-ID"));
    if (id.startsWith(u'<') && id.endsWith(u'>'))
        id = id.mid(1, id.size() - 2);
    leaf.contentId = id.trimmed();
    leaves.push_back(std::move(leaf));
}

QString textOf(const Leaf& leaf) {
    const QByteArray bytes = decodeTransfer(*leaf.part->getBody(), *leaf.part->getHeader());
    const QByteArray charset =
        parameter(*leaf.part->getHeader(), "Content-Type", "charset").toLatin1();
    return Charset::decodeBestEffort(bytes, charset);
}

QString extensionFor(const QString& mimeType) {
    static const QHash<QString, QString> known{
        {QStringLiteral("image/png"), QStringLiteral("png")},
        {QStringLiteral("image/jpeg"), QStringLiteral("jpg")},
        {QStringLiteral("image/jpg"), QStringLiteral("jpg")},
        {QStringLiteral("image/pjpeg"), QStringLiteral("jpg")},
        {QStringLiteral("image/gif"), QStringLiteral("gif")},
        {QStringLiteral("image/bmp"), QStringLiteral("bmp")},
        {QStringLiteral("image/tiff"), QStringLiteral("tif")},
        {QStringLiteral("text/plain"), QStringLiteral("txt")},
        {QStringLiteral("text/html"), QStringLiteral("htm")},
        {QStringLiteral("message/rfc822"), QStringLiteral("eml")},
        {QStringLiteral("application/pdf"), QStringLiteral("pdf")},
        {QStringLiteral("application/rtf"), QStringLiteral("rtf")},
    };
    return known.value(mimeType, QStringLiteral("bin"));
}

bool sameName(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// Names unique within the mail, compared without case (the file may go to a disk that ignores it).
class NamePool {
public:
    QString take(const QString& name) {
        QString candidate = name;
        const qsizetype dot = name.lastIndexOf(u'.');
        const QString stem = dot > 0 ? name.left(dot) : name;
        const QString ext = dot > 0 ? name.mid(dot) : QString();
        for (int n = 2; m_used.contains(candidate.toLower()); ++n)
            candidate = QStringLiteral("%1 (%2)%3").arg(stem).arg(n).arg(ext);
        m_used.insert(candidate.toLower());
        return candidate;
    }
    void reserve(const QString& name) { m_used.insert(name.toLower()); }

private:
    QSet<QString> m_used;
};

Resource resourceOf(const Leaf& leaf, const QString& stem, NamePool& names) {
    Resource r;
    r.mimeType = leaf.type;
    r.bytes = decodeTransfer(*leaf.part->getBody(), *leaf.part->getHeader());
    QString name = safeName(leaf.fileName, stem, leaf.type);
    if (leaf.type.startsWith(QLatin1String("image/")) && !PictureFormat::showableInMail(r.bytes)) {
        if (std::optional<QByteArray> png = PictureFormat::toPng(r.bytes)) {
            r.bytes = *png;
            r.mimeType = QStringLiteral("image/png");
            name = PictureFormat::withPngExtension(name);
        }
    }
    r.fileName = names.take(name);
    return r;
}

// The content id a "cid:" reference names: RFC 2392 allows percent-encoding.
QString cidOf(const QString& reference) {
    if (!reference.startsWith(QLatin1String("cid:"), Qt::CaseInsensitive))
        return {};
    return QUrl::fromPercentEncoding(reference.mid(4).trimmed().toUtf8());
}

} // namespace

QString safeName(const QString& proposed, const QString& fallbackStem, const QString& mimeType) {
    QString name = References::safeFileName(proposed).value_or(QString());
    for (QChar& c : name) {
        // Also the characters that mean something in a reference ("&", "#", "%", "'").
        if (QStringView(u":*?\"<>|&#%'").contains(c))
            c = u'_';
    }
    name = name.trimmed();
    while (name.startsWith(u'.'))
        name.remove(0, 1);
    if (name.isEmpty())
        name = fallbackStem + u'.' + extensionFor(mimeType);
    if (name.size() > kMaxNameLength) {
        const qsizetype dot = name.lastIndexOf(u'.');
        const QString ext = dot > 0 && name.size() - dot <= 10 ? name.mid(dot) : QString();
        name = name.left(kMaxNameLength - ext.size()) + ext;
    }
    // The converter's own output lives beside the pictures.
    if (sameName(name, QStringLiteral("OUTLOOK.HTML")) ||
        sameName(name, QStringLiteral("WORD.HTML")))
        name.prepend(u'_');
    return name;
}

std::optional<Mail> parse(QByteArrayView eml) {
    vmime::shared_ptr<vmime::message> message = vmime::make_shared<vmime::message>();
    try {
        message->parse(std::string(eml.data(), size_t(eml.size())));
    } catch (const vmime::exception&) {
        return std::nullopt;
    }
    Mail mail;
    if (const auto subject = message->getHeader()->findField("Subject")) {
        if (const auto text = subject->getValue<vmime::text>()) {
            try {
                mail.subject =
                    fromStd(text->getConvertedText(vmime::charset(vmime::charsets::UTF_8)));
            } catch (const vmime::exception&) {
            }
        }
    }
    std::vector<Leaf> leaves;
    collect(message, false, 0, leaves);
    if (leaves.empty())
        return std::nullopt;

    const auto isBodyCandidate = [](const Leaf& l, const char* type) {
        return l.type == QLatin1String(type) && l.disposition != QLatin1String("attachment");
    };
    const Leaf* bodyLeaf = nullptr;
    for (const char* type : {"text/html", "application/rtf", "text/rtf", "text/plain"}) {
        for (const Leaf& l : leaves) {
            if (!isBodyCandidate(l, type))
                continue;
            if (QByteArrayView(type).endsWith("rtf")) {
                const QByteArray rtf = decodeTransfer(*l.part->getBody(), *l.part->getHeader());
                if (std::optional<QString> html = EncapsulatedRtf::extractHtml(rtf)) {
                    mail.html = *html;
                    mail.bodyFrom = Mail::BodyFrom::EncapsulatedRtf;
                    bodyLeaf = &l;
                }
            } else {
                const QString text = textOf(l);
                mail.html =
                    QByteArrayView(type) == "text/html" ? text : TextImport::htmlFromText(text);
                mail.bodyFrom = QByteArrayView(type) == "text/html" ? Mail::BodyFrom::Html
                                                                    : Mail::BodyFrom::Text;
                bodyLeaf = &l;
            }
            if (bodyLeaf)
                break;
        }
        if (bodyLeaf)
            break;
    }
    if (!bodyLeaf)
        mail.html = TextImport::htmlFromText(QString());

    // The cid: references of the body, and the parts they name.
    References::ReferenceWalker walker(mail.html);
    QHash<QString, QString> fileOfCid; // content id, lower case -> file name
    NamePool names;
    std::vector<References::Edit> edits;
    std::vector<bool> used(leaves.size(), false);
    if (bodyLeaf)
        used[size_t(bodyLeaf - leaves.data())] = true;
    int pictureNumber = 0;
    for (const References::Reference& ref : walker.references()) {
        if (!ref.inSource())
            continue;
        const QString cid = cidOf(ref.value);
        // Outlook also names an attached picture by its bare file name or content id.
        const QString bare = ref.value.trimmed();
        const bool plainName = !bare.isEmpty() && !bare.contains(u'/') && !bare.contains(u'\\') &&
                               !bare.contains(u':');
        if (cid.isEmpty() && !plainName)
            continue;
        const QString key = (cid.isEmpty() ? bare : cid).toLower();
        if (!fileOfCid.contains(key)) {
            for (size_t i = 0; i < leaves.size(); ++i) {
                const bool named = leaves[i].contentId.toLower() == key ||
                                   (cid.isEmpty() && leaves[i].fileName.toLower() == key);
                if (used[i] || key.isEmpty() || !named)
                    continue;
                used[i] = true;
                Resource r = resourceOf(
                    leaves[i],
                    QStringLiteral("image%1").arg(++pictureNumber, 3, 10, QLatin1Char('0')), names);
                fileOfCid.insert(key, r.fileName);
                mail.pictures.push_back(std::move(r));
                break;
            }
        }
        const auto found = fileOfCid.constFind(key);
        if (found != fileOfCid.cend())
            edits.push_back(References::Edit::of(ref, *found));
    }
    if (!edits.empty())
        mail.html = walker.rewrite(edits);

    // Everything else a reader would miss: files, attached messages, pictures nothing shows.
    int attachmentNumber = 0;
    for (size_t i = 0; i < leaves.size(); ++i) {
        const Leaf& l = leaves[i];
        if (used[i])
            continue;
        const bool isText = l.type.startsWith(QLatin1String("text/"));
        const bool isAlternativeBody = l.inAlternative && isText && l.fileName.isEmpty() &&
                                       l.disposition != QLatin1String("attachment");
        if (isAlternativeBody)
            continue;
        // Inline text without a name is the mail's own text in another form, not a file.
        if (isText && l.fileName.isEmpty() && l.disposition != QLatin1String("attachment"))
            continue;
        if (l.type == QLatin1String("application/rtf") && l.fileName.isEmpty() &&
            l.disposition != QLatin1String("attachment"))
            continue;
        mail.attachments.push_back(
            resourceOf(l, QStringLiteral("part%1").arg(++attachmentNumber), names));
    }
    return mail;
}

Written writeFiles(const Mail& mail, const QString& folder) {
    Written w;
    const QString base = QDir(folder).absolutePath() + u'/';
    const auto write = [&w](const QString& path, const QByteArray& bytes) {
        QSaveFile out(path);
        if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit()) {
            w.error = QStringLiteral("%1: %2").arg(path, out.errorString());
            return false;
        }
        return true;
    };
    if (!QDir().mkpath(base)) {
        w.error = QStringLiteral("cannot create the folder %1").arg(base);
        return w;
    }
    for (const Resource& r : mail.pictures) {
        if (!write(base + r.fileName, r.bytes))
            return w;
        w.pictures << base + r.fileName;
    }
    if (mail.attachments.empty())
        return w;
    const QString attachments = base + QStringLiteral("attachments/");
    if (!QDir().mkpath(attachments)) {
        w.error = QStringLiteral("cannot create the folder %1").arg(attachments);
        return w;
    }
    for (const Resource& r : mail.attachments) {
        if (!write(attachments + r.fileName, r.bytes))
            return w;
        w.attachments << attachments + r.fileName;
    }
    return w;
}

} // namespace quillora::MailImport
