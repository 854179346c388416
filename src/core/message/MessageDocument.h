#pragma once

#include <QString>
#include <QStringList>

namespace quillora {

// The priority codes stored in a message file.
inline constexpr const char* kPriorityNormal = "NR";
inline constexpr const char* kPriorityHigh = "HI";
inline constexpr const char* kPriorityLow = "LW";

// The one message the editor holds: the GUI binds these fields to its widgets.
class MessageDocument {
public:
    static constexpr const char* kNewTitleName = "[NuovoFile.mssx]";

    QString subject;
    bool priorityHigh = false; // cmdPriAlta
    bool priorityLow = false;  // cmdPriBassa
    QStringList attachments;   // full paths, in list order, duplicates kept
    QString body;
    QString currentPath; // empty for a new message
    QString titleName = QString::fromLatin1(kNewTitleName);
    QString restoreFolder;  // where the opened message's files were restored
    QString openedFileName; // file name part of the last file opened
    int formatVersion = 4;
    bool loading = false; // while set, changes do not mark the document modified
    bool loadedFromFile = false;

    // The code written to the file: low, then high wins when both are checked.
    QString priorityCode() const;
    // HI checks high only, LW low only, anything else neither.
    void setPriorityCode(QStringView code);

    // Starts an empty message: removes the previous restore folder, resets every field but
    // the current path, and puts the skeleton into the body.
    void NuovoMessaggio();

    // "Quillora - " + the title name.
    QString CambiaTitoloEditor() const;

    // Puts the unsaved mark before the closing "]" once (not while loading).
    void Modificato();

    // True when the title name carries the unsaved mark.
    bool DaSalvare() const;

    // After a successful save or open: "[" + name + "]" and the path.
    void markSaved(const QString& path);
};

// The body of a new message, line by line with CR LF after each.
QString NewMessageSkeleton();

// The file-name part of a path (after the last "\" or "/").
QString fileNamePart(QStringView path);

} // namespace quillora
