#include "core/app/MessageMarkup.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

namespace quillora::bMessage {

namespace {

const QString kBlockEnd = QStringLiteral("</TextBlock>");

bool isNameChar(QChar c) {
    return c.isLetterOrNumber() || c == u'_' || c == u'-' || c == u'.' || c == u':';
}

// "&amp;" and friends, "&#38;", "&#x26;". Returns the number of characters used, 0 for none.
qsizetype readReference(QStringView s, qsizetype at, QString& out) {
    const qsizetype semi = s.indexOf(u';', at + 1);
    if (semi < 0 || semi - at > 12)
        return 0;
    const QStringView name = s.sliced(at + 1, semi - at - 1);
    static const struct {
        const char16_t* name;
        char16_t ch;
    } named[] = {{u"amp", u'&'}, {u"lt", u'<'}, {u"gt", u'>'}, {u"quot", u'"'}, {u"apos", u'\''}};
    for (const auto& n : named) {
        if (name == QStringView(n.name)) {
            out += QChar(n.ch);
            return semi - at + 1;
        }
    }
    if (name.size() >= 2 && name[0] == u'#') {
        bool ok = false;
        const uint code = (name[1] == u'x' || name[1] == u'X') ? name.sliced(2).toUInt(&ok, 16)
                                                               : name.sliced(1).toUInt(&ok, 10);
        if (ok && code > 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF)) {
            out += QString::fromUcs4(reinterpret_cast<const char32_t*>(&code), 1);
            return semi - at + 1;
        }
    }
    return 0;
}

struct Tag {
    QString name;
    bool closing = false;
    QList<std::pair<QString, QString>> attributes;

    QString attribute(QStringView key) const {
        for (const auto& [k, v] : attributes) {
            if (k == key)
                return v;
        }
        return {};
    }
};

QString decodeReferences(QStringView s) {
    QString out;
    for (qsizetype i = 0; i < s.size(); ++i) {
        if (s[i] == u'&') {
            const qsizetype used = readReference(s, i, out);
            if (used > 0) {
                i += used - 1;
                continue;
            }
        }
        out += s[i];
    }
    return out;
}

Tag readTag(QStringView inside) {
    Tag tag;
    qsizetype i = 0;
    if (i < inside.size() && inside[i] == u'/') {
        tag.closing = true;
        ++i;
    }
    const qsizetype nameStart = i;
    while (i < inside.size() && isNameChar(inside[i]))
        ++i;
    tag.name = inside.sliced(nameStart, i - nameStart).toString();
    while (i < inside.size()) {
        while (i < inside.size() && !isNameChar(inside[i]))
            ++i;
        const qsizetype keyStart = i;
        while (i < inside.size() && isNameChar(inside[i]))
            ++i;
        const QString key = inside.sliced(keyStart, i - keyStart).toString();
        while (i < inside.size() && inside[i].isSpace())
            ++i;
        if (key.isEmpty() || i >= inside.size() || inside[i] != u'=')
            continue;
        ++i;
        while (i < inside.size() && inside[i].isSpace())
            ++i;
        if (i >= inside.size())
            break;
        const QChar quote = inside[i];
        if (quote != u'\'' && quote != u'"')
            continue;
        const qsizetype end = inside.indexOf(quote, i + 1);
        if (end < 0)
            break;
        tag.attributes.append({key, decodeReferences(inside.sliced(i + 1, end - i - 1))});
        i = end + 1;
    }
    return tag;
}

void append(QList<TextRun>& runs, const QString& text, const QString& link) {
    if (text.isEmpty())
        return;
    if (!runs.isEmpty() && runs.last().link == link)
        runs.last().text += text;
    else
        runs.append({text, link});
}

bool startsWithNoCase(QStringView s, QStringView prefix) {
    return s.startsWith(prefix, Qt::CaseInsensitive);
}

} // namespace

QString escapeText(QString text) {
    text.replace(u'&', QStringLiteral("&amp;"));
    text.replace(u'<', QStringLiteral("&lt;"));
    text.replace(u'>', QStringLiteral("&gt;"));
    return text;
}

QString escapeTitle(QString text) {
    text.replace(u'<', QStringLiteral("&lt;"));
    text.replace(u'>', QStringLiteral("&gt;"));
    return text;
}

QString instructionMarkup(const QString& text) {
    return QStringLiteral("<TextBlock FontSize='14pt' FontFamily='Open Sans' FontWeight='Bold'>") +
           escapeText(text) + kBlockEnd;
}

QString contentMarkup(const QString& text) {
    return QStringLiteral("<TextBlock FontSize='9pt' FontFamily='Open Sans'>") +
           escapeText(text).replace(QStringLiteral("\r\n"), QStringLiteral("<LineBreak/>")) +
           kBlockEnd;
}

QString footerMarkup(const QString& text) {
    return QStringLiteral("<TextBlock FontSize='10pt' FontFamily='Open Sans'>") +
           escapeTitle(text) + kBlockEnd;
}

QString TextBlock::plainText() const {
    QString out;
    for (const TextRun& r : runs)
        out += r.text;
    return out;
}

TextBlock parseTextBlock(QStringView markup) {
    TextBlock block;
    bool sawBlock = false;
    QString link;
    QString text;
    const auto flush = [&] {
        append(block.runs, text, link);
        text.clear();
    };
    for (qsizetype i = 0; i < markup.size(); ++i) {
        const QChar c = markup[i];
        if (c == u'<') {
            const qsizetype end = markup.indexOf(u'>', i + 1);
            if (end < 0) {
                text += markup.sliced(i);
                break;
            }
            const Tag tag = readTag(markup.sliced(i + 1, end - i - 1));
            i = end;
            if (tag.name == u"LineBreak" && !tag.closing) {
                text += u'\n';
            } else if (tag.name == u"Hyperlink") {
                flush();
                link = tag.closing ? QString() : tag.attribute(u"NavigateUri");
            } else if (tag.name == u"TextBlock" && !tag.closing && !sawBlock) {
                sawBlock = true;
                QString size = tag.attribute(u"FontSize").trimmed();
                if (size.endsWith(QStringLiteral("pt"), Qt::CaseInsensitive))
                    size.chop(2);
                bool ok = false;
                const double points = size.toDouble(&ok);
                if (ok && points > 0 && points < 1000)
                    block.pointSize = points;
                block.fontFamily = tag.attribute(u"FontFamily");
                block.bold = tag.attribute(u"FontWeight")
                                 .compare(QStringLiteral("Bold"), Qt::CaseInsensitive) == 0;
            }
            continue;
        }
        if (c == u'&') {
            const qsizetype used = readReference(markup, i, text);
            if (used > 0) {
                i += used - 1;
                continue;
            }
        }
        if (c == u'\r') {
            text += u'\n';
            if (i + 1 < markup.size() && markup[i + 1] == u'\n')
                ++i;
            continue;
        }
        text += c;
    }
    flush();
    return block;
}

QString titleText(const QString& escapedTitle) {
    QString t = escapedTitle;
    t.replace(QStringLiteral("&lt;"), QStringLiteral("<"));
    t.replace(QStringLiteral("&gt;"), QStringLiteral(">"));
    return t;
}

QString imageFileToEdit(const QString& src, const QString& workingFolder) {
    QString path = src;
    // A remote image cannot be edited in place.
    if (path.isEmpty() || startsWithNoCase(path, u"http://") || startsWithNoCase(path, u"https://"))
        return {};
    bool fromUrl = false;
    if (startsWithNoCase(path, u"file://")) {
        path = path.mid(7);
        fromUrl = true;
    }
    if (path.isEmpty())
        return {};
    const bool network = path.startsWith(QStringLiteral("\\\\"));
    const bool drive = path.size() >= 2 && path[1] == u':';
    const bool rooted = path.startsWith(u'/') && QDir::separator() == u'/';
    if (!network && !drive && !rooted) {
        path.replace(u'\\', u'/');
        while (path.startsWith(u'/'))
            path.remove(0, 1);
        QString folder = workingFolder;
        if (!folder.isEmpty() && !folder.endsWith(u'/') && !folder.endsWith(u'\\'))
            folder += u'/';
        path = folder + path;
    }
    // The editing page hands out file URLs percent-encoded; the file has the plain name.
    if (fromUrl && path.contains(u'%') && !QFileInfo::exists(path)) {
        const QString decoded = QUrl::fromPercentEncoding(path.toUtf8());
        if (QFileInfo::exists(decoded))
            path = decoded;
    }
    return QDir::toNativeSeparators(path);
}

} // namespace quillora::bMessage
