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

// The loaders of a body: a message file (also a return to the visual page), a template, an
// imported HTML page, any other loader.
inline constexpr int kLoadModeMessage = 0;
inline constexpr int kLoadModeTemplate = 2;
inline constexpr int kLoadModeHtmlPage = 3;
inline constexpr int kLoadModeOther = 5;

struct Session {
    Folders folders;
    QString currentLanguage; // first line of LANGz.lng
    int windowsUserKind = 1; // 0 administrator, 1 normal user
    QString pathElaboration; // working folder of the current message
    QString baseFolder;      // relative references of a loaded body resolve against it
    int loadMode = 0;        // which loader put the body in the page (kLoadMode...)
    bool reloadFlag = false; // set by a loader until the page has taken its body
    Links links;             // web-site and support addresses
    bImpostazioni::WindowPlacement placement;
    bImpostazioni::FieldNames fieldNames;
    QString accountsError; // why the accounts database could not be opened, if it could not
    Texts texts;           // the interface texts of the current language
    std::shared_ptr<Dialogs> dialogs; // see Dialogs.h; made on first use
};

Session& session();

} // namespace quillora::gui
