#include "core/editor/UnsubscribeLink.h"

#include "core/editor/CommandTable.h"

namespace quillora::editor {

QString unsubscribeSentence(const QString& language) {
    if (language == QLatin1String("English"))
        return QStringLiteral("To unsubscribe click here.");
    if (language == QString::fromUtf8("Español"))
        return QString::fromUtf8("Para anular su suscripción, haga clic aquí.");
    return QStringLiteral("Per cancellarti dalla mailing list clicca qui.");
}

QString unsubscribeLink(const QString& address, const QString& language) {
    return QStringLiteral("<a href=\"mailto:") + address + QStringLiteral("?subject=REMOVE\">") +
           unsubscribeSentence(language) + QStringLiteral("</a>");
}

QString unsubscribeCommand(qint64 accountId) {
    return QLatin1String(kUnsubscribePrefix) + QString::number(accountId);
}

std::optional<qint64> accountOfCommand(const QString& command) {
    const QLatin1String prefix(kUnsubscribePrefix);
    if (!command.startsWith(prefix))
        return std::nullopt;
    bool ok = false;
    const qint64 id = command.mid(prefix.size()).toLongLong(&ok);
    if (!ok)
        return std::nullopt;
    return id;
}

} // namespace quillora::editor
