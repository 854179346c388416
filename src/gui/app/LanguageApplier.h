#pragma once

#include "core/app/Texts.h"
#include "core/app/bImpostazioni.h"
#include "core/app/bLANG.h"

#include <QString>
#include <functional>

class QMainWindow;
class QProgressBar;
class QWidget;

// Puts the language file's texts on the live widgets, found by object name, and keeps every
// text in the program's text store for the windows made later.
namespace quillora::gui {

// Loads the language file in the current language. Each text goes to its element: command
// captions, menu titles, toolbar and pane titles, tab captions and tooltips, the subject label,
// the status text, and the labels of any other window of the key table that exists now (a
// child of `main` or a top-level window). Every text is also kept in `texts` (message texts by
// their name, the others by full key); texts not in the file keep what `texts` held.
// The main window's own title is only kept: the title routine owns it.
bLANG::LoadResult applyLanguage(QMainWindow* main, Texts& texts, const QString& languageFile,
                                const QString& currentLanguage,
                                std::function<void(qint64, qint64)> progress = {});
// The same with the file read beforehand (bLANG::ReadLanguageTexts).
bLANG::LoadResult applyLanguage(QMainWindow* main, Texts& texts, const bLANG::LanguageTexts& read,
                                std::function<void(qint64, qint64)> progress = {});

// For a window made after the language was applied: every stored text of that window (by its
// object name) put on its widgets.
void applyWindowTexts(QWidget* window, const Texts& texts);

// The captions of "cmdVarCampo1".."cmdVarCampo9": the user's name for a field where one is
// given, otherwise the language's caption ("xxxCampo1".. in `texts`), otherwise unchanged.
void applyFieldNames(QMainWindow* main, const Texts& texts, const bImpostazioni::FieldNames& names);

// A progress function for the loader that drives a progress bar, scaled to its int range.
std::function<void(qint64, qint64)> progressOn(QProgressBar* bar);

} // namespace quillora::gui
