#include "gui/message/frmAllegati.h"
#include "core/app/FileFilter.h"
#include "gui/ScriptedDialogs.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QFile>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QUrl>
#include <gtest/gtest.h>

using namespace quillora::gui;

namespace {

class AttachmentsPaneTest : public testing::Test {
protected:
    void SetUp() override {
        previousLocale = QLocale();
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QObject::connect(&pane, &frmAllegati::modified, [this] { ++modifications; });
        scripted().onFile = [this](const ScriptedDialogs::FileQuestion& q) {
            asked << q.title + " | " + quillora::FileFilter::qtFilter(q.filter);
            return chosen;
        };
    }
    void TearDown() override { QLocale::setDefault(previousLocale); }

    QString makeFile(const QString& name, qsizetype bytes) {
        QFile f(dir.filePath(name));
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(bytes, 'x'));
        return f.fileName();
    }
    QStringList column(int c) const {
        QStringList out;
        for (int i = 0; i < pane.LIST()->topLevelItemCount(); ++i)
            out << pane.LIST()->topLevelItem(i)->text(c);
        return out;
    }
    bool removeEnabled() const { return pane.command("cmdAllegatiDel")->isEnabled(); }
    void add(const QString& path) {
        chosen = path;
        pane.command("cmdAllegatiNew")->trigger();
    }

    QLocale previousLocale;
    QTemporaryDir dir;
    frmAllegati pane;
    int modifications = 0;
    QString chosen;
    QStringList asked;
};

TEST_F(AttachmentsPaneTest, EmptyListHasOnlyTheHeader) {
    QTreeWidget* list = pane.LIST();
    EXPECT_EQ(list->topLevelItemCount(), 0);
    ASSERT_EQ(list->columnCount(), 3);
    EXPECT_EQ(list->headerItem()->text(0), "File");
    EXPECT_EQ(list->headerItem()->text(1), "Size");
    EXPECT_EQ(list->headerItem()->text(2), "Temporary Path");
    EXPECT_FALSE(list->header()->isHidden());
    EXPECT_FALSE(removeEnabled());
    EXPECT_TRUE(pane.command("cmdAllegatiNew")->isEnabled());
    EXPECT_TRUE(pane.paths().isEmpty());
}

TEST_F(AttachmentsPaneTest, AddAsksForAFileAndListsIt) {
    const QString kb = makeFile("report.pdf", 1028);
    add(kb);
    EXPECT_EQ(asked, QStringList{"Inserisci allegato | Tutti i file (*.*)"});
    EXPECT_EQ(column(0), QStringList{"report.pdf"});
    EXPECT_EQ(column(1), QStringList{"1.00 Kb"});
    EXPECT_EQ(column(2), QStringList{kb});
    EXPECT_FALSE(pane.LIST()->topLevelItem(0)->icon(0).isNull());
    EXPECT_EQ(modifications, 1);
    EXPECT_TRUE(removeEnabled());

    // Cancelling the dialog changes nothing.
    add(QString());
    EXPECT_EQ(pane.paths(), QStringList{kb});
    EXPECT_EQ(modifications, 1);
}

TEST_F(AttachmentsPaneTest, SameFileTwiceGivesTwoRowsInOrder) {
    const QString a = makeFile("a.txt", 0);
    const QString big = makeFile("big.bin", 1028 * 1500);
    add(a);
    add(big);
    add(a);
    EXPECT_EQ(pane.paths(), (QStringList{a, big, a}));
    EXPECT_EQ(column(1), (QStringList{"0.00 Kb", "1,500.00 Kb", "0.00 Kb"}));
    EXPECT_EQ(modifications, 3);
}

TEST_F(AttachmentsPaneTest, RemoveTakesTheCurrentRowAndDisablesItselfAtTheEnd) {
    const QString a = makeFile("a.txt", 1), b = makeFile("b.txt", 2), c = makeFile("c.txt", 3);
    pane.setPaths({a, b, c});
    EXPECT_EQ(modifications, 0); // an opened message is not a change
    pane.LIST()->setCurrentItem(pane.LIST()->topLevelItem(0));
    pane.command("cmdAllegatiDel")->trigger();
    EXPECT_EQ(pane.paths(), (QStringList{b, c}));
    EXPECT_EQ(modifications, 1);
    pane.Dks_CommandClick("cmdAllegatiDel");
    pane.Dks_CommandClick("cmdAllegatiDel");
    EXPECT_TRUE(pane.paths().isEmpty());
    EXPECT_FALSE(removeEnabled());
    EXPECT_EQ(modifications, 3);
    // Nothing left: the command does nothing, not even mark the message.
    pane.Dks_CommandClick("cmdAllegatiDel");
    EXPECT_EQ(modifications, 3);
}

TEST_F(AttachmentsPaneTest, DeleteKeyRemovesTheCurrentRow) {
    const QString a = makeFile("a.txt", 1), b = makeFile("b.txt", 2);
    add(a);
    add(b);
    pane.LIST()->setCurrentItem(pane.LIST()->topLevelItem(1));
    QKeyEvent del(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
    QApplication::sendEvent(pane.LIST(), &del);
    EXPECT_EQ(pane.paths(), QStringList{a});
    EXPECT_EQ(modifications, 3);
    QKeyEvent other(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier);
    QApplication::sendEvent(pane.LIST(), &other);
    EXPECT_EQ(pane.paths(), QStringList{a});
}

TEST_F(AttachmentsPaneTest, DroppedLocalFilesBecomeAttachments) {
    const QString a = makeFile("a.txt", 1028), b = makeFile("b.txt", 2056);
    QMimeData remoteOnly;
    remoteOnly.setUrls({QUrl("https://x.example/a.txt"), QUrl::fromLocalFile(dir.path())});
    QDragEnterEvent refused(QPoint(5, 5), Qt::CopyAction, &remoteOnly, Qt::LeftButton,
                            Qt::NoModifier);
    refused.setAccepted(false);
    QApplication::sendEvent(&pane, &refused);
    EXPECT_FALSE(refused.isAccepted());

    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(a), QUrl("https://x.example/c.txt"),
                  QUrl::fromLocalFile(dir.path()), QUrl::fromLocalFile(b)});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.setAccepted(false);
    QApplication::sendEvent(&pane, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&pane, &drop);
    EXPECT_EQ(pane.paths(), (QStringList{a, b}));
    EXPECT_EQ(column(1), (QStringList{"1.00 Kb", "2.00 Kb"}));
    EXPECT_EQ(modifications, 2);
    EXPECT_TRUE(removeEnabled());
}

TEST_F(AttachmentsPaneTest, ClearListAndHelpText) {
    add(makeFile("a.txt", 1));
    pane.ClearList();
    EXPECT_TRUE(pane.paths().isEmpty());
    EXPECT_FALSE(removeEnabled());
    EXPECT_EQ(pane.LIST()->headerItem()->text(2), "Temporary Path");

    QStringList help;
    QObject::connect(&pane, &frmAllegati::helpText, [&help](const QString& t) { help << t; });
    pane.setHelpText("Allegati del messaggio");
    QMouseEvent move(QEvent::MouseMove, QPointF(10, 10), QPointF(10, 10), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(pane.LIST()->viewport(), &move);
    ASSERT_FALSE(help.isEmpty());
    EXPECT_EQ(help.last(), "Allegati del messaggio");
}

// The pane as a user sees it: every file on a row with its icon, its size and its header.
TEST_F(AttachmentsPaneTest, RowsShowIconNameAndSize) {
    pane.setPaths({makeFile("Spring offers.pdf", 204800), makeFile("price-list.xlsx", 48211),
                   makeFile("logo.png", 9000)});
    pane.resize(620, 220);
    pane.show();
    QTreeWidget* list = pane.LIST();
    ASSERT_EQ(list->topLevelItemCount(), 3);
    EXPECT_FALSE(list->header()->isHidden());
    for (int i = 0; i < 3; ++i) {
        const QTreeWidgetItem* row = list->topLevelItem(i);
        EXPECT_FALSE(row->icon(0).isNull()) << i;
        EXPECT_FALSE(row->text(1).isEmpty()) << i;
        EXPECT_FALSE(list->visualItemRect(row).isEmpty()) << "row " << i << " is not shown";
    }
    EXPECT_EQ(list->topLevelItem(0)->text(0), "Spring offers.pdf");
    const QString folder = QStringLiteral(QUILLORA_BINARY_DIR "/screenshots");
    QDir().mkpath(folder);
    EXPECT_TRUE(pane.grab().save(folder + "/attachments.png"));
}

} // namespace
