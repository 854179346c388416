#include "core/editor/DocumentText.h"

#include <QRegularExpression>

namespace quillora::editor {

namespace {

QString quoted(const QString& id) {
    // An identifier holding a double quote can only have been written between single ones.
    const QChar q = id.contains(u'"') ? u'\'' : u'"';
    return q + id + q;
}

QString unquoted(const QString& token) {
    return token.size() >= 2 ? token.mid(1, token.size() - 2) : QString();
}

} // namespace

QString doctypeText(const Doctype& d) {
    QString out = QStringLiteral("<!DOCTYPE");
    if (!d.name.isEmpty())
        out += u' ' + d.name;
    if (!d.publicId.isEmpty()) {
        out += QStringLiteral(" PUBLIC ") + quoted(d.publicId);
        if (!d.systemId.isEmpty())
            out += u' ' + quoted(d.systemId);
    } else if (!d.systemId.isEmpty()) {
        out += QStringLiteral(" SYSTEM ") + quoted(d.systemId);
    }
    return out + u'>';
}

std::optional<SourceDoctype> sourceDoctype(QStringView html) {
    static const QRegularExpression re(
        QStringLiteral(R"(^\x{FEFF}?(?:\s|<!--.*?-->)*)"
                       R"((<!doctype(?:\s+([^\s>]+))?(?:\s+(public|system))?)"
                       R"((?:\s*("[^"]*"|'[^']*'))?(?:\s*("[^"]*"|'[^']*'))?\s*>)(\s*))"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    // The doctype stands at the head; a large document need not be scanned further.
    const QRegularExpressionMatch m = re.match(html.left(65536));
    if (!m.hasMatch())
        return std::nullopt;
    SourceDoctype s;
    s.text = m.captured(1);
    s.trailingSpace = m.captured(6);
    // The parser lowers ASCII letters of the name only.
    for (QChar c : m.captured(2))
        s.doctype.name += (c.unicode() < 128) ? c.toLower() : c;
    const QString keyword = m.captured(3).toLower();
    const QString first = unquoted(m.captured(4));
    const QString second = unquoted(m.captured(5));
    if (keyword == QLatin1String("public")) {
        s.doctype.publicId = first;
        s.doctype.systemId = second;
    } else if (keyword == QLatin1String("system")) {
        s.doctype.systemId = first;
    }
    return s;
}

QString composeDocument(const QList<TopLevelNode>& nodes,
                        const std::optional<SourceDoctype>& source) {
    QString out;
    QString separator;
    for (const TopLevelNode& n : nodes) {
        out += separator;
        separator = QStringLiteral("\r\n");
        switch (n.kind) {
        case TopLevelNode::Kind::Doctype:
            if (source && source->doctype == n.doctype) {
                out += source->text;
                separator = source->trailingSpace;
            } else {
                out += doctypeText(n.doctype);
            }
            break;
        case TopLevelNode::Kind::Comment:
            out += QStringLiteral("<!--") + n.text + QStringLiteral("-->");
            break;
        case TopLevelNode::Kind::Element:
            out += n.text;
            break;
        }
    }
    return out;
}

} // namespace quillora::editor
