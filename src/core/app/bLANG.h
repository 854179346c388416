#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <utility>
#include <vector>

// The language files: "LANGz.lng" names the language in use, "LANG_Quillora.lng" holds every
// text of the program in every language, one line per element:
//   [<LNG1>]Italiano                              a language header (numbered in file order)
//   [<FORM>]->frmMain    [<MDLO>]->bVAR           a section (a window, or the message texts)
//   [<NOME>]Caption[<LNG1>]testo[<LNG2>]text[<LNG3>]texto[<LNG4>]
// Texts are handed to the caller one by one; the core knows nothing of the widgets.
namespace quillora::bLANG {

// The current language: the selection file's first line through NVL (empty fallback), trimmed.
// Empty when the file is missing or unreadable.
QString SetVarCurrLanguage(const QString& choiceFile);

// The selection file's first line, trimmed, read again where a text depends on the language.
QString ControlloLingua(const QString& choiceFile);

// fullKey is a key of the program's table (LanguageKeys.h); text is the current language's.
using ApplyText = std::function<void(const QString& fullKey, const QString& text)>;
// The reading position against the file's size in bytes, both in bytes.
using Progress = std::function<void(qint64 position, qint64 maximum)>;

struct LoadResult {
    bool read = false;               // the language file could be read
    qint16 LanguageCount = 0;        // header lines in the file
    qint16 CurrentLanguageIndex = 0; // 1-based; 0 when the current language has no header
    int applied = 0;                 // calls of ApplyText
};

// Both passes over the language file. Every text line whose full key is in the program's
// table calls `apply` with the text of the current language (the later of two lines with the
// same key arrives later). Nothing is applied when the file cannot be read or the language
// has no header. `progress` is told the position after each line of the second pass.
LoadResult LoadLanguages(const QString& languageFile, const QString& currentLanguage,
                         const ApplyText& apply, const Progress& progress = {});

// The same over lines already read; `byteSize` is the size that the progress runs up to.
LoadResult LoadLanguageLines(const QStringList& lines, qint64 byteSize,
                             const QString& currentLanguage, const ApplyText& apply,
                             const Progress& progress = {});

// The texts of one language picked out of a language file, to be applied later: reading and
// picking may run on any thread, ahead of the windows that take the texts.
struct LanguageTexts {
    QString languageFile, currentLanguage; // what was read
    LoadResult result;                     // `applied` counts the texts
    qint64 maximum = 0;                    // where the progress runs up to
    struct Line {
        qint64 position; // the progress after the line
        int text;        // index into texts, or -1
    };
    std::vector<Line> lines;
    std::vector<std::pair<QString, QString>> texts; // full key, text
};
LanguageTexts ReadLanguageTexts(const QString& languageFile, const QString& currentLanguage);
// Hands the texts to `apply` and the positions to `progress`, as LoadLanguages does.
LoadResult ApplyLanguageTexts(const LanguageTexts& texts, const ApplyText& apply,
                              const Progress& progress = {});

} // namespace quillora::bLANG
