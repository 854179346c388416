#pragma once

#include <QString>
#include <optional>

// The link a reader follows to leave the mailing list: a mail to the sending account with the
// subject "REMOVE".
namespace quillora::editor {

// The link's text in the interface language; Italian for a language other than the three.
QString unsubscribeSentence(const QString& language);

// <a href="mailto:ADDRESS?subject=REMOVE">SENTENCE</a>, the address exactly as stored.
QString unsubscribeLink(const QString& address, const QString& language);

// The command of an account's menu entry ("cmdSubRem_" + id) and back; nullopt for a command
// of another family or one whose rest is not a whole number.
QString unsubscribeCommand(qint64 accountId);
std::optional<qint64> accountOfCommand(const QString& command);

} // namespace quillora::editor
