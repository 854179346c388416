#pragma once

#include "core/app/Folders.h"
#include "core/app/Links.h"
#include "core/app/Texts.h"
#include "core/app/bImpostazioni.h"

#include <QString>
#include <memory>

// The program-wide state that start-up establishes and every window reads.
namespace quillora::gui {

class Dialogs;

struct Session {
    Folders folders;
    QString currentLanguage; // first line of LANGz.lng
    int windowsUserKind = 1; // 0 administrator, 1 normal user
    QString pathElaboration; // working folder of the current message
    QString baseFolder;      // relative references of a loaded body resolve against it
    Links links;             // web-site and support addresses
    bImpostazioni::WindowPlacement placement;
    bImpostazioni::FieldNames fieldNames;
    QString accountsError; // why the accounts database could not be opened, if it could not
    Texts texts;           // the interface texts of the current language
    std::shared_ptr<Dialogs> dialogs; // see Dialogs.h; made on first use
};

Session& session();

} // namespace quillora::gui
