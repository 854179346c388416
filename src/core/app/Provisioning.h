#pragma once

#include "core/app/Folders.h"

#include <QString>
#include <QStringList>

// First start: lays down what an installer would have left in the shared data folder and
// the program folder. Nothing that already exists is ever overwritten.
namespace quillora::Provisioning {

struct Report {
    QStringList created; // paths made by this call
    QStringList failed;  // paths that could not be made, with the reason
};

// Copies `defaults` (the program's template of the shared data folder) into
// folders.pathFileImp, makes the standard sub-folders, creates the accounts database,
// and writes LANGz.lng into folders.appPath from `localeName` when it is missing.
Report ensureDataFolders(const Folders& folders, const QString& defaults,
                         const QString& localeName);

// The language named by a locale such as "it_IT": Italiano, Español or English.
QString languageForLocale(const QString& localeName);

// The ControllaUtenteWindows equivalent: 0 when the process may write to `systemFolder`
// (an administrator), 1 otherwise. Leaves nothing behind.
int userKind(const QString& systemFolder = QStringLiteral("/etc"));

} // namespace quillora::Provisioning
