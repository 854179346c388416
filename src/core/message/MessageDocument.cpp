#include "core/message/MessageDocument.h"

#include "core/app/Folders.h"
#include "core/app/bError.h"

namespace quillora {

QString MessageDocument::priorityCode() const {
    QString code = QString::fromLatin1(kPriorityNormal);
    if (priorityLow)
        code = QString::fromLatin1(kPriorityLow);
    if (priorityHigh)
        code = QString::fromLatin1(kPriorityHigh);
    return code;
}

void MessageDocument::setPriorityCode(QStringView code) {
    priorityHigh = code == QLatin1String(kPriorityHigh);
    priorityLow = code == QLatin1String(kPriorityLow);
}

void MessageDocument::NuovoMessaggio() {
    if (!restoreFolder.isEmpty())
        CancellaPercorsoTemporaneo(restoreFolder);
    restoreFolder.clear();
    formatVersion = 4;
    bError::wrtErrFree(QStringLiteral(" - Creo il corpo"));
    body = NewMessageSkeleton();
    titleName = QString::fromLatin1(kNewTitleName);
    subject.clear();
    priorityHigh = false;
    priorityLow = false;
    loadedFromFile = false;
    attachments.clear();
}

QString MessageDocument::CambiaTitoloEditor() const {
    return QStringLiteral("Quillora - ") + titleName;
}

void MessageDocument::Modificato() {
    if (loading || titleName.size() < 2)
        return;
    if (titleName.at(titleName.size() - 2) != u'*')
        titleName = titleName.left(titleName.size() - 1) + QStringLiteral("*]");
}

bool MessageDocument::DaSalvare() const {
    return titleName.size() >= 2 && titleName.at(titleName.size() - 2) == u'*';
}

void MessageDocument::markSaved(const QString& path) {
    titleName = u'[' + fileNamePart(path) + u']';
    currentPath = path;
}

QString fileNamePart(QStringView path) {
    const qsizetype cut = std::max(path.lastIndexOf(u'\\'), path.lastIndexOf(u'/'));
    return path.mid(cut + 1).toString();
}

QString NewMessageSkeleton() {
    static const char* const kLines[] = {
        R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01//EN")",
        R"(    "http://www.w3.org/TR/html4/strict.dtd">)",
        "<html>",
        "<head>",
        R"(<meta http-equiv="Content-Type" content="text/html; charset=utf-8" />)",
        // The second meta and the style tag share one line: that is the required text.
        R"(<meta charset="utf-8"><style>)",
        "body {",
        "    font-family: Verdana, Geneva, sans-serif;",
        "    font-size:12px;",
        "}",
        "p, li, div { margin:0cm; margin-bottom:.0001pt; }",
        ".TextSmall {",
        "    font-family: Verdana, Geneva, sans-serif;",
        "    font-style: Normal;",
        "    font-size: 10px;",
        "}",
        ".TextNormal {",
        "    font-family: Verdana, Geneva, sans-serif;",
        "    font-style: Normal;",
        "    font-size: 12px;",
        "}",
        ".TextBig {",
        "    font-family: Verdana, Geneva, sans-serif;",
        "    font-style: Normal;",
        "    font-size: 14px;",
        "}",
        ".TextTitleSmall {",
        "    font-family: Verdana, Geneva, sans-serif;",
        "    font-style: Bold;",
        "    font-size: 18px;",
        "}",
        ".TextTitleNormal {",
        "    font-family: Verdana, Geneva, sans-serif;",
        "    font-style: Bold;",
        "    font-size: 20px;",
        "}",
        ".TextTitleBig {",
        "    font-family: Verdana, Geneva, sans-serif;",
        "    font-style: Bold;",
        "    font-size: 22px;",
        "}",
        "img {",
        "  border:0; ",
        "  margin:0; padding:0;",
        "/*display:block;*/",
        "}",
        "</style>",
        "</head>",
        "<body>",
        "</body>",
        "</html>",
    };
    QString out;
    for (const char* line : kLines) {
        out += QLatin1String(line);
        out += QStringLiteral("\r\n");
    }
    return out;
}

} // namespace quillora
