#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

// The folders every part of the program reads, derived once at start-up.
// The core never looks them up itself, so tests run in temporary folders.
namespace quillora {

struct Folders {
    QString appPath;        // APP_PATH: program folder (language files, Links.dll)
    QString appDataAllUser; // APP_DATA_ALLUSER: shared documents folder
    QString pathFileImp;    // PATH_FILEIMP: the product family's shared data folder
    QString appMemory;      // APP_MEMORY
    QString appTemplate;    // APP_TEMPLATE
    QString appSocial;      // APP_SOCIAL

    // Derives every data folder from the two roots; each result ends with "/".
    static Folders derive(const QString& appPath, const QString& appDataAllUser);

    QString logFile() const { return pathFileImp + QStringLiteral("Log_Quillora.xt2"); }
    QString placementFile() const { return pathFileImp + QStringLiteral("frmQuillora.dll"); }
    QString fieldNameFile() const { return pathFileImp + QStringLiteral("FieldName.dll"); }
    QString layoutFile() const { return pathFileImp + QStringLiteral("LayoutEditor.dll"); }
    QString accountDatabase() const { return pathFileImp + QStringLiteral("crv_account.db"); }
    QString languageFile() const { return appPath + QStringLiteral("LANG_Quillora.lng"); }
    QString languageChoiceFile() const { return appPath + QStringLiteral("LANGz.lng"); }
    QString linksFile() const { return appPath + QStringLiteral("Links.dll"); }
};

// Adds a trailing "/" when the folder has none (the empty folder becomes "/").
QString withTrailingSlash(const QString& folder);

// The shared folder below APP_DATA_ALLUSER that the product family uses.
inline constexpr const char* kSharedDataSubfolder = "Talvenor Data/Corvanta 4/";

// GetPercorsoTemporaneo: makes (if needed) and returns the working folder
// PATH_FILEIMP + "Elaboration/" + yyyymmdd_hhmmss + "/". Empty when it cannot be made.
QString GetPercorsoTemporaneo(const QString& pathFileImp);
QString GetPercorsoTemporaneo(const QString& pathFileImp, const QDateTime& now);

// A working folder for a load that replaces the current one: made by GetPercorsoTemporaneo,
// or a "_1", "_2"… sibling when that is `current` (two loads in the same second), so the new
// folder can be filled while the current one still serves the message on screen.
// Empty when it cannot be made.
QString NewWorkFolderBeside(const QString& pathFileImp, const QString& current);

// CancellaPercorsoTemporaneo: removes one trailing separator, then the folder and all it holds.
void CancellaPercorsoTemporaneo(const QString& folder);

// CheckDosFielName: the path with its file-name part as the file system spells it.
// On a case-sensitive file system a name that exists is already spelt right; when it does
// not, a case-insensitive match in the folder is taken (a name typed in another case).
QString CheckDosFielName(const QString& path);

// The command-line rule: every double quote removed, the whole line one file name.
QString CommandLineFileName(const QStringList& arguments);

} // namespace quillora
