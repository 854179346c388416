#pragma once

#include <QString>
#include <QStringList>
#include <array>

// The main window's placement file and the merge-field names file.
namespace quillora::bImpostazioni {

// Placement in twips; the state is 0 normal, 1 minimised, 2 maximised.
struct WindowPlacement {
    float left = 0;
    float top = 0;
    float width = 0;
    float height = 0;
    qint16 state = 0;
    bool operator==(const WindowPlacement&) const = default;
};

inline constexpr int kWindowNormal = 0;
inline constexpr int kWindowMinimised = 1;
inline constexpr int kWindowMaximised = 2;

// Settings files are a few lines; anything past this is not one of ours.
inline constexpr qint64 kMaxSettingsBytes = 64 * 1024 * 1024;

// LeggiIMP's reading half: applies every recognised line of the file to `placement`.
// A missing, unreadable or malformed file leaves `placement` as it was.
void LeggiIMP(const QString& file, WindowPlacement& placement);

// The same on lines already read.
void ApplyPlacementLines(const QStringList& lines, WindowPlacement& placement);

// ScriviIMP's first rule: only a normal window refreshes the remembered edges, so a
// maximised or minimised window keeps the last normal placement.
void RememberPlacement(WindowPlacement& placement, int state, float left, float top, float width,
                       float height);

// The six lines of the file for a placement (a minimised state is written as normal).
QStringList PlacementLines(const WindowPlacement& placement);

// ScriviIMP's writing half. False when the file cannot be written.
bool ScriviIMP(const QString& file, const WindowPlacement& placement);

// The nine merge-field names, index 0 for field 1.
using FieldNames = std::array<QString, 9>;

// Reads nine lines into `names`: a non-empty trimmed line replaces the name, an empty one
// keeps it. A missing file or fewer than nine lines writes one step line to the log.
void CaricaNomiCampi(const QString& file, FieldNames& names);

// The same on lines already read; false when there were fewer than nine.
bool ApplyFieldNameLines(const QStringList& lines, FieldNames& names);

} // namespace quillora::bImpostazioni
