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
    {"alleg1", "Allegati del messaggio: aggiungere o togliere file.",
     "Attachments of the message: add or remove files.",
     "Adjuntos del mensaje: añadir o quitar archivos."},
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
