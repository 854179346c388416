#pragma once

#include <QMenu>
#include <QStringList>
#include <functional>

namespace quillora {
class Texts;
}

namespace quillora::gui {

// File > Recent messages: the latest messages opened or saved, filled each time it opens (another
// editor may have changed the list). A message whose file is gone is shown greyed, and the
// list can be rid of those or emptied.
class RecentMenu : public QMenu {
    Q_OBJECT
public:
    RecentMenu(const Texts& texts, std::function<QStringList()> files, QWidget* parent);

    // Builds the entries now (also done before every showing).
    void rebuild();

signals:
    void openRequested(const QString& file);
    void removeMissingRequested();
    void clearRequested();

private:
    const Texts& m_texts;
    std::function<QStringList()> m_files;
};

} // namespace quillora::gui
