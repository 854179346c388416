#include "core/spamcheck/ReadCounter.h"

namespace quillora::ReadCounter {

QString counterImage(const QString& host) {
    QString base = host.trimmed();
    while (base.endsWith(u'/'))
        base.chop(1);
    return QStringLiteral("<img height=\"0\" hspace=\"0\" width=\"0\" align=\"absMiddle\" "
                          "border=\"0\" SRC=\"") +
           base +
           QStringLiteral("/readcount.asp?KEY_INVIO_RND=0000&KEY_INVIO_MITT=000"
                          "&KEY_INVIO_IDINV=000&KEY_INVIO_DEST=000\" "
                          "style=\"width:0px; height:0px; visibility:hidden;\" />");
}

QString InserisciTag_READCOUNTER(QString html, bool counter) {
    const QString marker = QString::fromUtf16(kMarker);
    html.remove(marker);
    if (counter) {
        for (const char16_t* close : {u"</BODY>", u"</body>", u"</Body>"}) {
            const QString tag = QString::fromUtf16(close);
            html.replace(tag, marker + tag);
        }
    }
    return html;
}

QString EliminaTag_DESIGNTIMESP(QString html) {
    for (const char16_t* form :
         {u"DESIGNTIMESP=\"-1\"", u"designtimesp=\"-1\"", u"DESIGNTIMESP='-1'",
          u"designtimesp='-1'", u"DESIGNTIMESP=-1", u"designtimesp=-1"})
        html.remove(QString::fromUtf16(form));
    return html;
}

QString SostituisciTag_READCOUNTER(QString html, bool counter, const QString& host) {
    if (counter)
        html.replace(QString::fromUtf16(kMarker), counterImage(host));
    return html;
}

} // namespace quillora::ReadCounter
