#include "core/app/Texts.h"

namespace quillora {

namespace {

struct BuiltIn {
    const char* key;
    const char* italiano;
    const char* english;
    const char* espanol;
};

// UTF-8 source text.
constexpr BuiltIn kBuiltIn[] = {
    {"Attenzione", "Attenzione", "Attention", "Atención"},
    {"MessSalva1", "Il messaggio è stato modificato.", "The message has been changed.",
     "El mensaje ha sido modificado."},
    {"MessSalva2", "Salvare le modifiche prima di continuare?", "Save the changes before going on?",
     "¿Guardar los cambios antes de continuar?"},
    {"FormatoFileMessaggioErrato", "Il file scelto non è un messaggio.",
     "The chosen file is not a message file.", "El archivo elegido no es un mensaje."},
    {"NonDisponibile", "Questa funzione non è ancora disponibile.",
     "This function is not available yet.", "Esta función todavía no está disponible."},
    {"ErroreApertura", "Impossibile aprire il messaggio.", "The message cannot be opened.",
     "No se puede abrir el mensaje."},
    {"ErroreSalvataggio", "Impossibile salvare il messaggio.", "The message cannot be saved.",
     "No se puede guardar el mensaje."},
    {"GuidaNonDisponibile", "La guida non è disponibile per questa lingua.",
     "The guide is not available for this language.",
     "La guía no está disponible para este idioma."},
    {"AccountNonDisponibili",
     "L'archivio degli account non si può aprire: questa funzione ne ha bisogno.",
     "The accounts database cannot be opened, and this function needs it.",
     "No se puede abrir la base de datos de cuentas, y esta función la necesita."},
    {"RecentiMancante", "(mancante)", "(missing)", "(no encontrado)"},
    {"RecentiNessuno", "Nessun messaggio recente", "No recent messages",
     "No hay mensajes recientes"},
    {"RecentiRimuoviMancanti", "Togli i messaggi mancanti", "Remove missing messages",
     "Quitar los mensajes que faltan"},
    {"RecentiSvuota", "Svuota l'elenco", "Clear the list", "Vaciar la lista"},
    {"RecuperoIstruzione", "Questo messaggio non era stato salvato quando Quillora si è chiuso.",
     "This message had not been saved when Quillora last closed.",
     "Este mensaje no se había guardado cuando Quillora se cerró."},
    {"RecuperoScritta", "Copia scritta il", "Copy written on", "Copia escrita el"},
    {"MessaggioGiaAperto",
     "Il messaggio è già aperto in un'altra finestra, portata in primo piano.",
     "The message is already open in another window, which has been brought forward.",
     "El mensaje ya está abierto en otra ventana, que se ha traído al frente."},
    {"ColoreNonValido",
     "Il colore va scritto come tre numeri da 0 a 255 separati da \";\" (per esempio 255;0;128) "
     "oppure come #rrggbb.",
     "Write the colour as three numbers from 0 to 255 separated by \";\" (for example 255;0;128) "
     "or as #rrggbb.",
     "Escriba el color como tres números de 0 a 255 separados por \";\" (por ejemplo 255;0;128) "
     "o como #rrggbb."},
    {"SubRemNessunAccount",
     "Nessun account di invio: aggiungerne uno con quillora-cli accounts add",
     "No sending account: add one with quillora-cli accounts add",
     "Ninguna cuenta de envío: añada una con quillora-cli accounts add"},
    {"alleg1", "Allegati del messaggio: aggiungere o togliere file.",
     "Attachments of the message: add or remove files.",
     "Adjuntos del mensaje: añadir o quitar archivos."},
    // The check before sending, the preview and the test send.
    {"chkEmptySubject", "L'oggetto è vuoto.", "The subject is empty.", "El asunto está vacío."},
    {"chkMissingAlt",
     "L'immagine %1 non ha un testo alternativo (alt): chi blocca le immagini non vede nulla al "
     "suo posto.",
     "The image %1 has no alternative text (alt): readers who block images see nothing in its "
     "place.",
     "La imagen %1 no tiene texto alternativo (alt): quien bloquea las imágenes no ve nada en su "
     "lugar."},
    {"chkMissingAltSpacer",
     "La piccola immagine %1 non ha alt: aggiungere alt=\"\" perché i lettori di schermo la "
     "saltino.",
     "The small image %1 has no alt: add alt=\"\" so screen readers skip it.",
     "La imagen pequeña %1 no tiene alt: añada alt=\"\" para que los lectores de pantalla la "
     "omitan."},
    {"chkMissingFile", "Il file %1 non esiste: il messaggio non può portarlo con sé.",
     "The file %1 does not exist: the message cannot carry it.",
     "El archivo %1 no existe: el mensaje no puede llevarlo consigo."},
    {"chkMissingAttachment", "L'allegato %1 non esiste più.", "The attachment %1 no longer exists.",
     "El adjunto %1 ya no existe."},
    {"chkInsecureImage",
     "L'immagine %1 è caricata con http://: molti programmi di posta la bloccano o avvisano il "
     "lettore. Usare https://.",
     "The image %1 is loaded over http://: many mail programs block it or warn the reader. Use "
     "https://.",
     "La imagen %1 se carga por http://: muchos programas de correo la bloquean o avisan al "
     "lector. Use https://."},
    {"chkEmptyLink",
     "Il collegamento \"%1\" ha una destinazione vuota, \"#\" o javascript: (%2): cliccato non "
     "porta da nessuna parte.",
     "The link \"%1\" has an empty, \"#\" or javascript: target (%2): clicking it leads nowhere.",
     "El enlace \"%1\" tiene un destino vacío, \"#\" o javascript: (%2): al pulsarlo no lleva a "
     "ninguna parte."},
    {"chkNoUnsubscribe", "Il messaggio non ha un collegamento per cancellarsi dalla lista.",
     "The message has no unsubscribe link.",
     "El mensaje no tiene un enlace para anular la suscripción."},
    {"chkUnknownToken", "%1 non è un campo di unione: arriverà ai lettori così com'è.",
     "%1 is not a merge field: readers will get it as written.",
     "%1 no es un campo de combinación: los lectores lo recibirán tal cual."},
    {"chkUnknownTokenLike",
     "%1 non è un campo di unione (forse %2?): arriverà ai lettori così com'è.",
     "%1 is not a merge field (did you mean %2?): readers will get it as written.",
     "%1 no es un campo de combinación (¿quería decir %2?): los lectores lo recibirán tal cual."},
    {"chkGmailClip",
     "L'HTML è di %1 KB: Gmail taglia i messaggi oltre 102 KB e nasconde il resto dietro un "
     "collegamento.",
     "The HTML is %1 KB: Gmail clips messages over 102 KB and hides the rest behind a link.",
     "El HTML ocupa %1 KB: Gmail recorta los mensajes de más de 102 KB y oculta el resto tras un "
     "enlace."},
    {"chkTooLarge", "Con i suoi file il messaggio sarà di circa %1 MB, oltre il limite di %2 MB.",
     "With its files the message will be about %1 MB, over the limit of %2 MB.",
     "Con sus archivos el mensaje ocupará unos %1 MB, por encima del límite de %2 MB."},
    {"chkStripped",
     "I programmi di posta tolgono l'elemento %1: quello che fa non arriverà ai lettori.",
     "Mail programs remove the %1 element: what it does will not reach readers.",
     "Los programas de correo eliminan el elemento %1: lo que hace no llegará a los lectores."},
    {"chkInsecureForm",
     "Il modulo invia a un indirizzo http:// (%1): i programmi di posta lo tolgono o avvisano il "
     "lettore.",
     "The form sends to an http:// address (%1): mail programs remove it or warn the reader.",
     "El formulario envía a una dirección http:// (%1): los programas de correo lo eliminan o "
     "avisan al lector."},
    {"chkTitle", "Verifica messaggio", "Check message", "Comprobar mensaje"},
    {"chkNothing", "Nessun problema trovato.", "No problems found.",
     "No se ha encontrado ningún problema."},
    {"chkSummary", "%1 errori, %2 avvisi, %3 suggerimenti", "%1 errors, %2 warnings, %3 hints",
     "%1 errores, %2 avisos, %3 sugerencias"},
    {"chkSizeLimit", "Limite di dimensione (MB):", "Size limit (MB):", "Límite de tamaño (MB):"},
    {"chkAgain", "Verifica di nuovo", "Check again", "Comprobar de nuevo"},
    {"chkError", "Errore", "Error", "Error"},
    {"chkWarning", "Avviso", "Warning", "Aviso"},
    {"chkHint", "Suggerimento", "Hint", "Sugerencia"},
    {"prvDesktop", "Desktop", "Desktop", "Escritorio"},
    {"prvPhone", "Telefono 375 px", "Phone 375 px", "Teléfono 375 px"},
    {"prvTablet", "Tablet 768 px", "Tablet 768 px", "Tableta 768 px"},
    {"prvDark", "Modalità scura", "Dark mode", "Modo oscuro"},
    {"prvForceDark", "Scurisci sempre i colori (come i programmi che li invertono)",
     "Always darken the colours (like programs that invert them)",
     "Oscurecer siempre los colores (como los programas que los invierten)"},
    {"prvSample", "Destinatario di esempio", "Sample recipient", "Destinatario de ejemplo"},
    {"prvEditSample", "Modifica il destinatario di esempio...", "Edit the sample recipient...",
     "Editar el destinatario de ejemplo..."},
    {"prvSampleTitle", "Destinatario di esempio: i valori dei campi di unione nell'anteprima",
     "Sample recipient: the merge field values in the preview",
     "Destinatario de ejemplo: los valores de los campos de combinación en la vista previa"},
    {"prvField", "Campo", "Field", "Campo"},
    {"prvValue", "Valore", "Value", "Valor"},
    {"sndTitle", "Invio di prova", "Send test", "Envío de prueba"},
    {"sndAccount", "Account:", "Account:", "Cuenta:"},
    {"sndTo", "A:", "To:", "Para:"},
    {"sndPassword", "Password:", "Password:", "Contraseña:"},
    {"sndSend", "Invia", "Send", "Enviar"},
    {"sndSending", "Invio in corso...", "Sending...", "Enviando..."},
    {"sndSent", "Il messaggio di prova è stato inviato. Il server ha risposto: %1",
     "The test message was sent. The server answered: %1",
     "El mensaje de prueba se ha enviado. El servidor ha respondido: %1"},
    {"sndLoginRefused",
     "Il server ha rifiutato l'accesso: controllare nome utente e password. Il server ha risposto: "
     "%1",
     "The server refused the login: check the user name and password. The server answered: %1",
     "El servidor ha rechazado el acceso: compruebe el nombre de usuario y la contraseña. El "
     "servidor ha respondido: %1"},
    {"sndUnreachable", "Il server %1 non è raggiungibile sulla porta %2: %3",
     "The server %1 cannot be reached on port %2: %3",
     "No se puede acceder al servidor %1 en el puerto %2: %3"},
    {"sndBadCertificate", "Il certificato del server non ha superato la verifica: %1",
     "The server's certificate failed verification: %1",
     "El certificado del servidor no ha superado la verificación: %1"},
    {"sndTrustOnce", "Fidati di questo certificato per questo invio",
     "Trust this certificate for this send", "Confiar en este certificado para este envío"},
    {"sndCancelled", "Invio annullato.", "Sending was cancelled.", "Envío cancelado."},
    {"sndRefused", "Il server non ha accettato il messaggio. Il server ha risposto: %1",
     "The server did not accept the message. The server answered: %1",
     "El servidor no ha aceptado el mensaje. El servidor ha respondido: %1"},
    {"sndFailed", "L'invio non è riuscito: %1", "Sending failed: %1", "El envío ha fallado: %1"},
    {"sndNoAccount", "Nessun account di invio configurato: crearne uno prima dell'invio di prova.",
     "No sending account is set up: create one before sending a test.",
     "No hay ninguna cuenta de envío configurada: cree una antes del envío de prueba."},
    {"sndBadAddress", "Inserire un indirizzo e-mail corretto.", "Enter a valid e-mail address.",
     "Introduzca una dirección de correo correcta."},
    {"ImpAttesa", "Conversione del file in corso…", "Converting the file…",
     "Convirtiendo el archivo…"},
    {"ImpInterrompi", "Interrompi", "Stop", "Detener"},
    {"ImpStrumentoMancante",
     "Per importare questo file serve %1, che non è installato: installare il pacchetto Debian %2.",
     "Importing this file needs %1, which is not installed: install the Debian package %2.",
     "Para importar este archivo se necesita %1, que no está instalado: instale el paquete Debian "
     "%2."},
    {"ImpConversioneFallita", "Impossibile convertire il file; il messaggio aperto non è cambiato.",
     "The file could not be converted; the open message is unchanged.",
     "No se pudo convertir el archivo; el mensaje abierto no ha cambiado."},
    {"ImpTempoScaduto", "La conversione ha richiesto troppo tempo ed è stata interrotta.",
     "The conversion took too long and was stopped.", "La conversión tardó demasiado y se detuvo."},
    {"ImpTipoSconosciuto", "Questo tipo di file non si può importare.",
     "This type of file cannot be imported.", "Este tipo de archivo no se puede importar."},
    {"ImpMailVuota", "Il messaggio di posta non contiene testo né HTML.",
     "The mail holds no text or HTML.", "El correo no contiene texto ni HTML."},
};

} // namespace

Texts Texts::builtIn(const QString& language) {
    Texts t;
    for (const BuiltIn& b : kBuiltIn) {
        const char* text = language == QLatin1String("Italiano")      ? b.italiano
                           : language == QString::fromUtf8("Español") ? b.espanol
                                                                      : b.english;
        t.set(QString::fromLatin1(b.key), QString::fromUtf8(text));
    }
    return t;
}

} // namespace quillora
