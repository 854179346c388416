#pragma once

#include <QHash>
#include <QString>

// The message texts the program shows, by key. Built-in texts exist in the three languages
// of the program; the language file replaces them when it is loaded.
namespace quillora {

class Texts {
public:
    // Built-in texts for "Italiano", "English" or "Español" (English for anything else).
    static Texts builtIn(const QString& language);

    QString get(const QString& key) const { return m_texts.value(key); }
    void set(const QString& key, const QString& text) { m_texts.insert(key, text); }
    bool contains(const QString& key) const { return m_texts.contains(key); }

private:
    QHash<QString, QString> m_texts;
};

} // namespace quillora
