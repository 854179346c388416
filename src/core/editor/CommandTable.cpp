#include "core/editor/CommandTable.h"

#include "core/editor/DhtmlCommands.h"

namespace quillora::editor {

namespace {

using A = Action;

constexpr MergeField kMergeFields[] = {
    {"cmdVarRgs", ":::rgs:::"},       {"cmdVarPiva", ":::piva:::"},
    {"cmdVarCog", ":::cog:::"},       {"cmdVarNom", ":::nom:::"},
    {"cmdVarCodFis", ":::codfis:::"}, {"cmdVarInd", ":::ind:::"},
    {"cmdVarCap", ":::cap:::"},       {"cmdVarLoc", ":::loc:::"},
    {"cmdVarProv", ":::prov:::"},     {"cmdVarTel", ":::tel:::"},
    {"cmdVarFax", ":::fax:::"},       {"cmdVarCell", ":::cell:::"},
    {"cmdVarEmail", ":::email:::"},   {"cmdVarCampo1", ":::campo1:::"},
    {"cmdVarCampo2", ":::campo2:::"}, {"cmdVarCampo3", ":::campo3:::"},
    {"cmdVarCampo4", ":::campo4:::"}, {"cmdVarCampo5", ":::campo5:::"},
    {"cmdVarCampo6", ":::campo6:::"}, {"cmdVarCampo7", ":::campo7:::"},
    {"cmdVarCampo8", ":::campo8:::"}, {"cmdVarCampo9", ":::campo9:::"},
    {"cmdVarData1", ":::data1:::"},   {"cmdVarData2", ":::data2:::"},
    {"cmdVarData3", ":::data3:::"},   {"cmdVarOra1", ":::ora1:::"},
    {"cmdVarOra2", ":::ora2:::"},     {"cmdVarOra3", ":::ora3:::"},
};

constexpr Command kCommandsHead[] = {
    {"cmdCheckSpam", A::CheckSpam},
    {"cmdNewMess", A::NewMessage},
    {"cmdApriMess", A::OpenMessage},
    {"cmdSalva", A::Save},
    {"cmdApriWord", A::OpenWord},
    {"cmdApriOutlook", A::OpenMail},
    {"cmdImpDaImg", A::ImportFromImage},
    {"cmdApriModelli", A::Templates},
    {"cmdSalvaAs", A::SaveAs},
    {"cmdEsportaEml", A::ExportEml},
    {"cmdAccount", A::Accounts},
    {"cmdStampa", A::Print},
    {"cmdEsci", A::Exit},
    {"cmdUndo", A::EditCommand, DECMD_UNDO, nullptr, true},
    {"cmdRedo", A::EditCommand, DECMD_REDO, nullptr, true},
    {"cmdTaglia", A::EditCommand, DECMD_CUT, nullptr, true},
    {"cmdCopia", A::EditCommand, DECMD_COPY},
    {"cmdIncolla", A::EditCommand, DECMD_PASTE, nullptr, true},
    {"cmdSelezionaTutto", A::EditCommand, DECMD_SELECTALL},
    {"cmdTrova", A::EditCommand, DECMD_FINDTEXT},
    {"cmdTableInsRow", A::SurfaceCommand, DECMD_INSERTROW},
    {"cmdTableInsCol", A::SurfaceCommand, DECMD_INSERTCOL},
    {"cmdTableDelRow", A::SurfaceCommand, DECMD_DELETEROWS},
    {"cmdTableDelCol", A::SurfaceCommand, DECMD_DELETECOLS},
    {"cmdModuliForm", A::Snippet, 0, R"(<form name="form1" method="get" action=""></form>)"},
    {"cmdModuliText", A::Snippet, 0, R"(<input name="text1" type="text" value="" SIZE="20">)"},
    {"cmdModuliTextArea", A::Snippet, 0,
     R"(<textarea name="textarea1" COLS="40" ROWS="6"></textarea>)"},
    {"cmdModuliCheckBox", A::Snippet, 0,
     R"(<input type="checkbox" name="checkbox1" value="checkbox">)"},
    {"cmdModuliRadioButton", A::Snippet, 0,
     R"(<input type="radio" name="radiobutton" value="radiobutton">)"},
    {"cmdModuliList", A::Snippet, 0,
     R"(<select name="select1" SIZE="6"><option value="1">valore1</option><option value="2">valore2</option></select>)"},
    {"cmdModuliListMenu", A::Snippet, 0,
     R"(<select name="select1"><option value="1">valore1</option><option value="2">valore2</option></select>)"},
    {"cmdModuliHidden", A::Snippet, 0, R"(<input type="hidden" name="hiddenField1">)"},
    {"cmbFontName", A::FontName, DECMD_SETFONTNAME},
    {"cmbFontSize", A::FontSize, DECMD_SETFONTSIZE},
    {"cmdBold", A::SurfaceCommand, DECMD_BOLD},
    {"cmdItalic", A::SurfaceCommand, DECMD_ITALIC},
    {"cmdUnderline", A::SurfaceCommand, DECMD_UNDERLINE},
    {"cmdNumerato", A::SurfaceCommand, DECMD_ORDERLIST},
    {"cmdPuntato", A::SurfaceCommand, DECMD_UNORDERLIST},
    {"cmdSX", A::SurfaceCommand, DECMD_OUTDENT},
    {"cmdDX", A::SurfaceCommand, DECMD_INDENT},
    {"cmdLeft", A::SurfaceCommand, DECMD_JUSTIFYLEFT},
    {"cmdCenter", A::SurfaceCommand, DECMD_JUSTIFYCENTER},
    {"cmdRight", A::SurfaceCommand, DECMD_JUSTIFYRIGHT},
    {"cmdImage", A::SurfaceCommand, DECMD_IMAGE},
    {"cmdLink", A::SurfaceCommand, DECMD_HYPERLINK},
    {"cmdHR", A::Snippet, 0, "<hr>"},
    {"cmdTable", A::Snippet, 0,
     R"(<table width="100%" border="0" cellspacing="2" cellpadding="0"><tr><td>Cella1</td><td>Cella2</td><td>Cella3</td></tr></table>)"},
};

constexpr Command kCommandsTail[] = {
    {"cmdAudio", A::Sound},
    {"cmdShowDetails", A::ShowDetails},
    {"cmdShowBorder", A::ShowBorders},
    {"cmdProprieta", A::BodyProperties},
    {"cmdPriBassa", A::PriorityLow},
    {"cmdPriAlta", A::PriorityHigh},
    {"cmdRefresh", A::RefreshImages},
    {"cmdImpTXT", A::ImportText},
    {"cmdImpHTML", A::ImportHtml},
    {"cmdInfoSu", A::About},
    {"cmdHelp", A::Help},
    {"cmdSocial", A::Social},
    {"cmdCheckMsg", A::CheckMessage},
    {"cmdSendTest", A::SendTest},
    {"cmdStatusTbMain", A::ToggleToolbar, 0, nullptr, false, "TbMain"},
    {"cmdStatusTbStrumenti", A::ToggleToolbar, 0, nullptr, false, "TbStrumenti"},
    {"cmdStatusTbTesto", A::ToggleToolbar, 0, nullptr, false, "TbTesto"},
    {"cmdStatusTbInserisci", A::ToggleToolbar, 0, nullptr, false, "TbInserisci"},
    {"cmdStatusTbMessaggio", A::ToggleToolbar, 0, nullptr, false, "TbMessaggio"},
};

constexpr ToolbarToggle kToolbarToggles[] = {
    {"TbMain", "cmdStatusTbMain"},           {"TbStrumenti", "cmdStatusTbStrumenti"},
    {"TbTesto", "cmdStatusTbTesto"},         {"TbInserisci", "cmdStatusTbInserisci"},
    {"TbMessaggio", "cmdStatusTbMessaggio"},
};

const std::vector<Command>& table() {
    static const std::vector<Command> all = [] {
        std::vector<Command> v(std::begin(kCommandsHead), std::end(kCommandsHead));
        for (const MergeField& f : kMergeFields)
            v.push_back({f.command, A::MergeField, 0, f.token});
        v.insert(v.end(), std::begin(kCommandsTail), std::end(kCommandsTail));
        return v;
    }();
    return all;
}

} // namespace

std::span<const Command> commands() {
    return table();
}

std::optional<Command> find(QStringView id) {
    for (const Command& c : table()) {
        if (id == QLatin1String(c.id))
            return c;
    }
    if (id.startsWith(QLatin1String(kUnsubscribePrefix)))
        return Command{kUnsubscribePrefix, A::Unsubscribe};
    return std::nullopt;
}

std::span<const MergeField> mergeFields() {
    return kMergeFields;
}
std::span<const ToolbarToggle> toolbarToggles() {
    return kToolbarToggles;
}

QString CleanCrLf(QString text) {
    text.remove(QStringLiteral("\r\n"));
    text.remove(u'\n');
    text.remove(u'\r');
    return text;
}

QString joinTagPath(const QStringList& innermostFirst) {
    QString out;
    const qsizetype n = std::min<qsizetype>(innermostFirst.size(), kTagPathDepth);
    for (qsizetype i = n - 1; i >= 0; --i)
        out += innermostFirst[i];
    return CleanCrLf(out);
}

QString GetLastElement(QStringView label) {
    const qsizetype at = label.lastIndexOf(u'<');
    return at < 0 ? QString() : label.mid(at).toString();
}

TagBar tagBarFor(const QString& path) {
    TagBar bar;
    bar.tags = QStringLiteral("TAG: ") + path;
    bar.last = GetLastElement(bar.tags);
    bar.tags.chop(bar.last.size());
    return bar;
}

QString modeText(const QString& pageCaption) {
    return QStringLiteral("Mod. ") + pageCaption;
}

QString highlightText(QString caption) {
    caption.remove(u'&');
    return caption;
}

} // namespace quillora::editor
