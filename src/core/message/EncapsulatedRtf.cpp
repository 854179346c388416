#include "core/message/EncapsulatedRtf.h"

#include "core/message/Charset.h"

#include <QByteArrayView>
#include <vector>

namespace quillora::EncapsulatedRtf {

namespace {

// The "\fromhtml1" flag sits in the document's header, before any text.
constexpr qsizetype kHeaderScan = 4096;
// Deeper nesting than this is no real document; it only guards the group stack.
constexpr size_t kMaxDepth = 1024;

struct Group {
    bool skip = false;    // a destination whose text is no part of the HTML
    bool htmlrtf = false; // "\htmlrtf": text that exists only for RTF readers
    int uc = 1;           // characters that stand in for each "\uN"
};

bool isDestinationSkipped(QByteArrayView word) {
    static constexpr QByteArrayView kSkipped[] = {"fonttbl",
                                                  "colortbl",
                                                  "stylesheet",
                                                  "info",
                                                  "pict",
                                                  "object",
                                                  "header",
                                                  "footer",
                                                  "listtable",
                                                  "rsidtbl",
                                                  "generator",
                                                  "listoverridetable",
                                                  "xmlnstbl",
                                                  "themedata",
                                                  "latentstyles",
                                                  "datastore",
                                                  "colorschememapping"};
    for (QByteArrayView s : kSkipped) {
        if (word == s)
            return true;
    }
    return false;
}

class Extractor {
public:
    explicit Extractor(QByteArrayView rtf) : m_in(rtf) {}

    QString run() {
        m_groups.push_back({});
        while (m_pos < m_in.size()) {
            const char c = m_in[m_pos++];
            if (c == '{') {
                if (m_groups.size() >= kMaxDepth)
                    break;
                m_groups.push_back(m_groups.back());
                m_groupStart = true;
                continue;
            }
            if (c == '}') {
                flush();
                if (m_groups.size() > 1)
                    m_groups.pop_back();
                m_star = false;
                m_groupStart = false;
                m_skipChars = 0;
                continue;
            }
            if (c == '\\') {
                controlSymbol();
                continue;
            }
            m_groupStart = false;
            if (c == '\r' || c == '\n')
                continue;
            byte(c);
        }
        flush();
        return m_out;
    }

private:
    Group& group() { return m_groups.back(); }
    bool emitting() const { return !m_groups.back().skip && !m_groups.back().htmlrtf; }

    void byte(char c) {
        if (m_skipChars > 0) {
            --m_skipChars;
            return;
        }
        if (emitting())
            m_pending.append(c);
    }

    void text(QStringView s) {
        if (m_skipChars > 0) {
            --m_skipChars;
            return;
        }
        if (!emitting())
            return;
        flush();
        m_out.append(s);
    }

    void flush() {
        if (m_pending.isEmpty())
            return;
        m_out.append(Charset::decodeBestEffort(m_pending, m_codePage));
        m_pending.clear();
    }

    static int hex(char c) {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        if (c >= 'A' && c <= 'F')
            return c - 'A' + 10;
        return -1;
    }

    void controlSymbol() {
        if (m_pos >= m_in.size())
            return;
        const char c = m_in[m_pos];
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter) {
            controlWord();
            return;
        }
        ++m_pos;
        const bool atGroupStart = m_groupStart;
        m_groupStart = false;
        switch (c) {
        case '*':
            m_star = atGroupStart;
            m_groupStart = atGroupStart; // the destination word still opens the group
            return;
        case '\'': {
            if (m_pos + 2 <= m_in.size()) {
                const int hi = hex(m_in[m_pos]);
                const int lo = hex(m_in[m_pos + 1]);
                if (hi >= 0 && lo >= 0) {
                    m_pos += 2;
                    byte(char(hi * 16 + lo));
                }
            }
            return;
        }
        case '{':
        case '}':
        case '\\':
            byte(c);
            return;
        case '~':
            text(u"\u00A0");
            return;
        case '\r':
        case '\n':
            text(u"\r\n");
            return;
        case '_':
            text(u"-");
            return;
        default:
            return; // "\-" optional hyphen, "\:" and the other symbols carry no text
        }
    }

    void controlWord() {
        const qsizetype start = m_pos;
        while (m_pos < m_in.size() && ((m_in[m_pos] >= 'a' && m_in[m_pos] <= 'z') ||
                                       (m_in[m_pos] >= 'A' && m_in[m_pos] <= 'Z')))
            ++m_pos;
        const QByteArrayView word = m_in.sliced(start, m_pos - start);
        bool hasParam = false;
        bool negative = false;
        long long param = 0;
        if (m_pos < m_in.size() && m_in[m_pos] == '-') {
            negative = true;
            ++m_pos;
        }
        int digits = 0;
        while (m_pos < m_in.size() && m_in[m_pos] >= '0' && m_in[m_pos] <= '9') {
            if (digits++ < 10)
                param = param * 10 + (m_in[m_pos] - '0');
            hasParam = true;
            ++m_pos;
        }
        if (negative)
            param = -param;
        if (m_pos < m_in.size() && m_in[m_pos] == ' ')
            ++m_pos;

        const bool destination = m_groupStart;
        const bool star = m_star;
        m_groupStart = false;
        m_star = false;
        if (destination) {
            if (word == "htmltag") {
                group().skip = false;
                group().htmlrtf = false;
                return;
            }
            if (star || isDestinationSkipped(word)) {
                group().skip = true;
                return;
            }
        }
        if (word == "htmlrtf") {
            group().htmlrtf = !hasParam || param != 0;
        } else if (word == "ansicpg" && hasParam) {
            flush();
            m_codePage = "CP" + QByteArray::number(param);
        } else if (word == "uc" && hasParam) {
            group().uc = int(qBound(0LL, param, 16LL));
        } else if (word == "u" && hasParam) {
            const char16_t unit = char16_t(param < 0 ? param + 65536 : param);
            text(QStringView(&unit, 1));
            m_skipChars = group().uc;
        } else if (word == "par" || word == "line") {
            text(u"\r\n");
        } else if (word == "tab") {
            text(u"\t");
        } else if (word == "lquote") {
            text(u"\u2018");
        } else if (word == "rquote") {
            text(u"\u2019");
        } else if (word == "ldblquote") {
            text(u"\u201C");
        } else if (word == "rdblquote") {
            text(u"\u201D");
        } else if (word == "bullet") {
            text(u"\u2022");
        } else if (word == "endash") {
            text(u"\u2013");
        } else if (word == "emdash") {
            text(u"\u2014");
        }
    }

    QByteArrayView m_in;
    qsizetype m_pos = 0;
    std::vector<Group> m_groups;
    bool m_groupStart = false;
    bool m_star = false;
    int m_skipChars = 0;
    QByteArray m_codePage = "CP1252";
    QByteArray m_pending;
    QString m_out;
};

} // namespace

bool carriesHtml(QByteArrayView rtf) {
    return rtf.startsWith("{\\rtf") &&
           rtf.first(qMin(rtf.size(), kHeaderScan)).indexOf(QByteArrayView("\\fromhtml1")) >= 0;
}

std::optional<QString> extractHtml(QByteArrayView rtf) {
    if (!carriesHtml(rtf))
        return std::nullopt;
    return Extractor(rtf).run();
}

} // namespace quillora::EncapsulatedRtf
