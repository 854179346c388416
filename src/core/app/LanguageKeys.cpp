#include "core/app/LanguageKeys.h"

#include <QHash>
#include <vector>

namespace quillora::bLANG {

namespace {

using K = TargetKind;

constexpr Target message(const char* id) {
    return {K::Message, "bVAR", id};
}
constexpr Target field(const char* id, const char* command) {
    return {K::MergeFieldCaption, "bVAR", id, -1, command};
}
constexpr Target window(const char* name) {
    return {K::WindowCaption, name, nullptr};
}
constexpr Target control(const char* window, const char* id, int index = -1) {
    return {K::ControlCaption, window, id, index};
}
constexpr Target mainWindow(K kind, const char* id, int index = -1) {
    return {kind, "frmMain", id, index};
}
constexpr Target tool(const char* id) {
    return mainWindow(K::ToolButton, id);
}

// One row per text of the program. The rows up to each "ours" comment are the keys the
// product family's language files have always carried; the rest cover what this program
// shows besides them, written the same way.
constexpr Target kRows[] = {
    // Message texts.
    message("Attenzione"),
    message("Lingua"),
    message("ChangeLang01"),
    message("ImpossibileContinuare"),
    message("accNomeVisual"),
    message("accEmailCorretta"),
    message("accServerSMTP"),
    message("accPort"),
    message("accAutenticazione"),
    message("goSecondi"),
    message("AddDestinatario"),
    message("goApriEmail"),
    message("goEmailDiOutlook"),
    message("AzzeraMailing"),
    message("FileAssistenza"),
    message("DestInserisciEmail"),
    message("DestAggiungiDestinatario"),
    message("DestInserireEmailCorretta"),
    message("MailingSalvata"),
    message("MailingSalva"),
    message("MailingImporta"),
    message("MailingOpen"),
    field("xxxRagioneSociale", "cmdVarRgs"),
    field("xxxNome", "cmdVarNom"),
    field("xxxPIva", "cmdVarPiva"),
    field("xxxIndirizzo", "cmdVarInd"),
    field("xxxCAP", "cmdVarCap"),
    field("xxxLocalita", "cmdVarLoc"),
    field("xxxProvincia", "cmdVarProv"),
    field("xxxTelefono", "cmdVarTel"),
    field("xxxFax", "cmdVarFax"),
    field("xxxCampo1", "cmdVarCampo1"),
    field("xxxCampo2", "cmdVarCampo2"),
    field("xxxCampo3", "cmdVarCampo3"),
    field("xxxCampo4", "cmdVarCampo4"),
    field("xxxCampo5", "cmdVarCampo5"),
    field("xxxCampo6", "cmdVarCampo6"),
    field("xxxCampo7", "cmdVarCampo7"),
    field("xxxCampo8", "cmdVarCampo8"),
    field("xxxCampo9", "cmdVarCampo9"),
    message("varModDestinatario"),
    message("varTitlePropBody"),
    message("varAddDestinatario"),
    message("varAllegati"),
    message("FormatoFileMessaggioErrato"),
    message("MessSalva1"),
    message("MessSalva2"),
    message("ReadCounterInfo"),
    message("alleg1"), // the attachments pane's status text
    message("alleg2"),
    message("msgImportWeb"),
    message("dhtmlModImmagine"),
    message("dhtmlModImmagineTitle"),
    message("PercorsoTemporaneo"),
    message("spamMsgAvvisoTitle"),
    message("spamMsgAvviso"),
    message("spamMsgErroreControllo"),
    message("socialIndPage"),
    // ours: messages of the main window's file flows and unfinished commands.
    message("NonDisponibile"),
    message("ErroreApertura"),
    message("ErroreSalvataggio"),
    message("GuidaNonDisponibile"),
    message("AccountNonDisponibili"),
    // ours: the spam check's own messages and the e-mail export.
    message("spamMsgNoFiltro"),
    message("spamSoloLocale"),
    message("spamAnnullato"),
    message("spamImmagineMancante"),
    message("spamChiudi"),
    message("spamAnnulla"),
    message("EsportaEmlTitolo"),
    message("EsportaEmlNoAccount"),
    // ours: recent messages, recovery copies, one window per message.
    message("RecentiMancante"),
    message("RecentiNessuno"),
    message("RecentiRimuoviMancanti"),
    message("RecentiSvuota"),
    message("RecuperoIstruzione"),
    message("RecuperoScritta"),
    message("MessaggioGiaAperto"),
    message("ColoreNonValido"),
    message("SubRemNessunAccount"),
    // ours: the imports.
    message("ImpAttesa"),
    message("ImpInterrompi"),
    message("ImpStrumentoMancante"),
    message("ImpConversioneFallita"),
    message("ImpTempoScaduto"),
    message("ImpTipoSconosciuto"),
    message("ImpMailVuota"),

    window("frmPropBody"),
    control("frmPropBody", "lbl"),
    control("frmPropBody", "cdmSalva"),
    control("frmPropBody", "grpMargini"),
    control("frmPropBody", "lblSx"),
    control("frmPropBody", "lblUp"),
    control("frmPropBody", "lblWd"),
    control("frmPropBody", "lblHg"),
    control("frmPropBody", "grpColori"),
    control("frmPropBody", "lblSfondo"),
    control("frmPropBody", "lblTesto"),
    control("frmPropBody", "lblLink"),
    control("frmPropBody", "lblLinkAttivi"),
    control("frmPropBody", "lblLinkVisitati"),
    control("frmPropBody", "grpImmagini"),
    control("frmPropBody", "lblImmagineSfondo"),

    window("frmMemoryPop"),
    control("frmMemoryPop", "lbl"),
    control("frmMemoryPop", "lbl2"),
    control("frmMemoryPop", "cmdOK"),

    window("frmSelAudio"),
    control("frmSelAudio", "lbl", 0),
    control("frmSelAudio", "lbl", 1),
    control("frmSelAudio", "cmdOK"),
    {K::ControlCaption, "frmSelAudio", "chkInfinito", -1, nullptr, "caption"},

    window("frmAllegati"),
    window("frmMemory"),

    window("frmTemplate"),
    control("frmTemplate", "lblTitolo"),
    control("frmTemplate", "lblDescrizione"),
    control("frmTemplate", "cmdImport"), // ours

    control("frmCheckSpam", "lblMittente"),
    control("frmCheckSpam", "lblEmailDest"),
    control("frmCheckSpam", "lblNomeDest"),
    control("frmCheckSpam", "chkConfermaLettura"),
    control("frmCheckSpam", "chkContatore"),
    control("frmCheckSpam", "cmdAvviaTest"),
    // ours: the spam check's caption and additions, and the accounts window.
    window("frmCheckSpam"),
    control("frmCheckSpam", "chkReplyTo"),
    control("frmCheckSpam", "cmdAccount"),
    window("frmAccount"),
    control("frmAccount", "lblNome"),
    control("frmAccount", "lblEmail"),
    control("frmAccount", "lblServer"),
    control("frmAccount", "lblPorta"),
    control("frmAccount", "lblAutenticazione"),
    control("frmAccount", "lblSicurezza"),
    control("frmAccount", "chkAttivo"),
    control("frmAccount", "cmdNuovo"),
    control("frmAccount", "cmdSalva"),
    control("frmAccount", "cmdElimina"),
    control("frmAccount", "cmdChiudi"),
    {K::ColumnHeader, "frmAccount", "lstAccount", 0},
    {K::ColumnHeader, "frmAccount", "lstAccount", 1},
    {K::ColumnHeader, "frmAccount", "lstAccount", 2},
    {K::ColumnHeader, "frmAccount", "lstAccount", 3},
    {K::ColumnHeader, "frmAccount", "lstAccount", 4},
    {K::ColumnHeader, "frmAccount", "lstAccount", 5},
    {K::ColumnHeader, "frmAccount", "lstAccount", 6},

    window("frmImpDaImg"),
    control("frmImpDaImg", "lblFile"),
    control("frmImpDaImg", "lblMaxWidth"),
    control("frmImpDaImg", "lblAltezzaSez"),
    control("frmImpDaImg", "cmdImportImg"),
    control("frmImpDaImg", "cmdCancel"), // ours: stops the slices, or closes the window

    window("frmMain"),
    tool("cmdBold"),
    tool("cmdItalic"),
    tool("cmdUnderline"),
    tool("cmdNumerato"),
    tool("cmdPuntato"),
    tool("cmdDX"),
    tool("cmdSX"),
    tool("cmdLeft"),
    tool("cmdCenter"),
    tool("cmdRight"),
    tool("cmdImage"),
    tool("cmdLink"),
    tool("cmdHR"),
    tool("cmdTable"),
    tool("cmdNewMess"),
    tool("cmdApriMess"),
    tool("cmdSalva"),
    tool("cmdSalvaAs"),
    tool("cmdStampa"),
    tool("cmdEsci"),
    tool("cmdProprieta"),
    tool("cmdPriBassa"),
    tool("cmdPriAlta"),
    tool("cmdTaglia"),
    tool("cmdCopia"),
    tool("cmdIncolla"),
    tool("cmdUndo"),
    tool("cmdRedo"),
    tool("cmdTrova"),
    tool("cmdSelezionaTutto"),
    tool("cmdShowDetails"),
    tool("cmdShowBorder"),
    tool("cmdVarRgs"),
    tool("cmdVarNom"),
    tool("cmdVarCog"),
    tool("cmdVarEmail"),
    tool("cmdVarPiva"),
    tool("cmdVarCodFis"),
    tool("cmdVarInd"),
    tool("cmdVarCap"),
    tool("cmdVarLoc"),
    tool("cmdVarProv"),
    tool("cmdVarTel"),
    tool("cmdVarCell"),
    tool("cmdVarFax"),
    tool("cmdVarData1"),
    tool("cmdVarData2"),
    tool("cmdVarData3"),
    tool("cmdVarOra1"),
    tool("cmdVarOra2"),
    tool("cmdVarOra3"),
    tool("cmdTableInsRow"),
    tool("cmdTableInsCol"),
    tool("cmdTableDelRow"),
    tool("cmdTableDelCol"),
    tool("cmdModuliForm"),
    tool("cmdModuliText"),
    tool("cmdModuliTextArea"),
    tool("cmdModuliCheckBox"),
    tool("cmdModuliRadioButton"),
    tool("cmdModuliList"),
    tool("cmdModuliListMenu"),
    tool("cmdModuliHidden"),
    tool("cmdInfoSu"),
    tool("cmdImpTXT"),
    tool("cmdImpHTML"),
    tool("cmdImpWeb"),
    tool("cmdAudio"),
    tool("cmdApriModelli"),
    tool("cmdApriWord"),
    tool("cmdApriOutlook"),
    tool("cmdImpDaImg"),
    tool("cmdStatusTbMain"),
    tool("cmdStatusTbStrumenti"),
    tool("cmdStatusTbTesto"),
    tool("cmdStatusTbInserisci"),
    tool("cmdStatusTbMessaggio"),
    mainWindow(K::PopupMenu, "popTable"),
    mainWindow(K::PopupMenu, "popModuli"),
    mainWindow(K::PopupMenu, "popVarCampi"),
    mainWindow(K::PopupMenu, "popVarData"),
    mainWindow(K::PopupMenu, "popVarOra"),
    mainWindow(K::PopupMenu, "mnuFile"),
    mainWindow(K::PopupMenu, "mnuModifica"),
    mainWindow(K::PopupMenu, "mnuTesto"),
    mainWindow(K::PopupMenu, "mnuStrumenti"),
    mainWindow(K::PopupMenu, "mnuVisualizza"),
    mainWindow(K::PopupMenu, "mnuHelp"),
    mainWindow(K::PopupMenu, "mnuVariabili"),
    mainWindow(K::PopupMenu, "mnuProprietaMessaggio"),
    mainWindow(K::PopupMenu, "mnuModuli"),
    mainWindow(K::PopupMenu, "popSubRem"),
    mainWindow(K::PopupMenu, "mnuInsert"),
    mainWindow(K::EditLabel, "txtOggetto"),
    mainWindow(K::StaticText, "stcHelp"),
    mainWindow(K::DockCaption, "dckAllegati"),
    mainWindow(K::DockCaption, "dckProperty"),
    mainWindow(K::DockCaption, "dckMemory"), // ours
    mainWindow(K::TabToolTip, "Tbs", 0),
    mainWindow(K::TabCaption, "Tbs", 0),
    mainWindow(K::TabToolTip, "Tbs", 1),
    mainWindow(K::TabCaption, "Tbs", 1),
    mainWindow(K::TabToolTip, "Tbs", 2),
    mainWindow(K::TabCaption, "Tbs", 2),
    mainWindow(K::ToolbarName, "TbMain"),
    mainWindow(K::ToolbarName, "TbStrumenti"),
    mainWindow(K::ToolbarName, "TbTesto"),
    mainWindow(K::ToolbarName, "TbInserisci"),
    mainWindow(K::ToolbarName, "TbMessaggio"),
    // ours: the commands, menus and combo boxes of the main window that the rows above leave
    // without a caption.
    tool("cmdRefresh"),
    tool("cmdCheckSpam"),
    tool("cmdEsportaEml"),
    tool("cmdAccount"),
    tool("cmdSocial"),
    tool("cmdHelp"),
    mainWindow(K::PopupMenu, "mnuImporta"),
    mainWindow(K::PopupMenu, "mnuRecenti"),
    mainWindow(K::ComboCaption, "cmbFontName"),
    mainWindow(K::ComboCaption, "cmbFontSize"),

    // ours: the attachments pane's command bar and list.
    {K::ToolButton, "frmAllegati", "cmdAllegatiNew"},
    {K::ToolButtonTip, "frmAllegati", "cmdAllegatiNew"},
    {K::ToolButton, "frmAllegati", "cmdAllegatiDel"},
    {K::ToolButtonTip, "frmAllegati", "cmdAllegatiDel"},
    {K::ColumnHeader, "frmAllegati", "LIST", 0},
    {K::ColumnHeader, "frmAllegati", "LIST", 1},
    {K::ColumnHeader, "frmAllegati", "LIST", 2},

    // ours: the snippet pane's command bar and the social-links window.
    {K::ToolButton, "frmMemory", "cmdMemoryNew"},
    {K::ToolButtonTip, "frmMemory", "cmdMemoryNew"},
    {K::ToolButton, "frmMemory", "cmdMemoryMod"},
    {K::ToolButtonTip, "frmMemory", "cmdMemoryMod"},
    {K::ToolButton, "frmMemory", "cmdMemoryDel"},
    {K::ToolButtonTip, "frmMemory", "cmdMemoryDel"},
    window("frmSocial"),
    control("frmSocial", "lblSize"),
    control("frmSocial", "cmdInsertLink"),

    // ours: the About window and the splash window, which show the same panel.
    window("frmInfoSu"),
    control("frmInfoSu", "lblSubtitle"),
    control("frmInfoSu", "lblVersionLabel"),
    control("frmInfoSu", "lblSiteLabel"),
    control("frmInfoSu", "lblMailLabel"),
    control("frmInfoSu", "lblHint"),
    control("frmSplash", "lblSubtitle"),
    control("frmSplash", "lblVersionLabel"),
    control("frmSplash", "lblSiteLabel"),
    control("frmSplash", "lblMailLabel"),

    // ours: the check before sending, the preview and the test send.
    message("chkEmptySubject"),
    message("chkMissingAlt"),
    message("chkMissingAltSpacer"),
    message("chkMissingFile"),
    message("chkMissingAttachment"),
    message("chkInsecureImage"),
    message("chkEmptyLink"),
    message("chkNoUnsubscribe"),
    message("chkUnknownToken"),
    message("chkUnknownTokenLike"),
    message("chkGmailClip"),
    message("chkTooLarge"),
    message("chkStripped"),
    message("chkInsecureForm"),
    message("chkTitle"),
    message("chkNothing"),
    message("chkSummary"),
    message("chkSizeLimit"),
    message("chkAgain"),
    message("chkError"),
    message("chkWarning"),
    message("chkHint"),
    message("prvDesktop"),
    message("prvPhone"),
    message("prvTablet"),
    message("prvDark"),
    message("prvForceDark"),
    message("prvSample"),
    message("prvEditSample"),
    message("prvSampleTitle"),
    message("prvField"),
    message("prvValue"),
    message("sndTitle"),
    message("sndAccount"),
    message("sndTo"),
    message("sndPassword"),
    message("sndSend"),
    message("sndSending"),
    message("sndSent"),
    message("sndLoginRefused"),
    message("sndUnreachable"),
    message("sndBadCertificate"),
    message("sndTrustOnce"),
    message("sndCancelled"),
    message("sndRefused"),
    message("sndFailed"),
    message("sndNoAccount"),
    message("sndBadAddress"),
    tool("cmdCheckMsg"),
    tool("cmdSendTest"),

    // ours: the message box buttons.
    control("frmMessage", "cmdOK"),
    control("frmMessage", "cmdYes"),
    control("frmMessage", "cmdNo"),
    control("frmMessage", "cmdRipristina"),
    control("frmMessage", "cmdSalvaAltrove"),
    control("frmMessage", "cmdScarta"),
};

QString keyOf(const Target& t) {
    const QString w = QString::fromLatin1(t.window);
    const QString id = QString::fromLatin1(t.id);
    const QString quoted = QStringLiteral("(\"") + id + QStringLiteral("\")");
    const QString n = QString::number(t.index);
    switch (t.kind) {
    case K::Message:
    case K::MergeFieldCaption:
        return w + u'.' + id;
    case K::WindowCaption:
        return w + QStringLiteral(".Caption");
    case K::ControlCaption:
        return w + u'.' + id + (t.index >= 0 ? u'(' + n + u')' : QString()) + u'.' +
               QString::fromLatin1(t.property ? t.property : "Caption");
    case K::ToolButton:
        return w + QStringLiteral(".Dks.Commands.GetToolButton") + quoted +
               QStringLiteral(".Caption");
    case K::ToolButtonTip:
        return w + QStringLiteral(".Dks.Commands.GetToolButton") + quoted +
               QStringLiteral(".TooltipText");
    case K::ComboCaption:
        return w + QStringLiteral(".Dks.Commands.GetComboBox") + quoted +
               QStringLiteral(".Caption");
    case K::PopupMenu:
        return w + QStringLiteral(".Dks.Commands.GetPopupMenu") + quoted +
               QStringLiteral(".Caption");
    case K::EditLabel:
        return w + QStringLiteral(".Dks.Commands.GetEdit") + quoted + QStringLiteral(".Label");
    case K::StaticText:
        return w + QStringLiteral(".Dks.Commands.GetStatic") + quoted + QStringLiteral(".Text");
    case K::DockCaption:
        return w + QStringLiteral(".Dks.DockWindows") + quoted + QStringLiteral(".Caption");
    case K::ToolbarName:
        return w + QStringLiteral(".Dks.CommandBars") + quoted + QStringLiteral(".NameLocal");
    case K::TabToolTip:
        return w + u'.' + id + QStringLiteral(".Item(") + n + QStringLiteral(").ToolTip");
    case K::TabCaption:
        return w + u'.' + id + QStringLiteral(".Item(") + n + QStringLiteral(").Caption");
    case K::ColumnHeader:
        return w + u'.' + id + QStringLiteral(".TextMatrix(0, ") + n + u')';
    }
    return QString();
}

struct Table {
    std::vector<LanguageKey> keys;
    QHash<QString, qsizetype> index;
};

const Table& table() {
    static const Table t = [] {
        Table out;
        out.keys.reserve(std::size(kRows));
        for (const Target& row : kRows) {
            out.index.insert(keyOf(row), qsizetype(out.keys.size()));
            out.keys.push_back({keyOf(row), row});
        }
        return out;
    }();
    return t;
}

} // namespace

std::span<const LanguageKey> keys() {
    return table().keys;
}

const LanguageKey* findKey(QStringView fullKey) {
    const Table& t = table();
    const auto it = t.index.constFind(fullKey.toString());
    return it == t.index.cend() ? nullptr : &t.keys[size_t(*it)];
}

QString storeKey(const LanguageKey& key) {
    if (key.target.kind == TargetKind::Message || key.target.kind == TargetKind::MergeFieldCaption)
        return QString::fromLatin1(key.target.id);
    return key.key;
}

} // namespace quillora::bLANG
