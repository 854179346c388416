#include "core/app/Folders.h"
#include "core/TestFiles.h"
#include "core/app/AccountStore.h"
#include "core/app/Provisioning.h"
#include "core/app/TextFile.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora;

namespace {

const QString kDefaults = QStringLiteral(QUILLORA_SOURCE_DIR "/data/defaults/");

TEST(Folders, DerivedFromTheTwoRoots) {
    const Folders f = Folders::derive("/opt/q", "/home/u/.local/share");
    EXPECT_EQ(f.appPath, "/opt/q/");
    EXPECT_EQ(f.appDataAllUser, "/home/u/.local/share/");
    EXPECT_EQ(f.pathFileImp, "/home/u/.local/share/Talvenor Data/Corvanta 4/");
    EXPECT_EQ(f.appMemory, f.pathFileImp + "Memory/");
    EXPECT_EQ(f.appTemplate, f.pathFileImp + "Template/");
    EXPECT_EQ(f.appSocial, f.pathFileImp + "Icone Social/");
    EXPECT_EQ(Folders::derive("", "").appDataAllUser, "/"); // unknown folder hangs off the root
}

TEST(Folders, WorkingFolderStampAndRemoval) {
    QTemporaryDir dir;
    const QString base = dir.path() + "/";
    const QDateTime when(QDate(2026, 11, 14), QTime(9, 5, 3));
    const QString folder = GetPercorsoTemporaneo(base, when);
    EXPECT_EQ(folder, base + "Elaboration/20261114_090503/");
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_EQ(GetPercorsoTemporaneo(base, when), folder); // same second, same folder
    writeBytes(folder + "x.png");
    CancellaPercorsoTemporaneo(folder);
    EXPECT_FALSE(QFileInfo::exists(folder));
    EXPECT_TRUE(QFileInfo(base + "Elaboration").isDir());
    CancellaPercorsoTemporaneo(folder); // gone already: nothing happens
    CancellaPercorsoTemporaneo("");
    EXPECT_TRUE(QFileInfo(base).isDir());
}

// A load that replaces the message fills a folder of its own while the current one still
// serves the page, even within the same second.
TEST(Folders, ANewWorkFolderIsNeverTheCurrentOne) {
    QTemporaryDir dir;
    const QString base = dir.path() + "/";
    const QString current = GetPercorsoTemporaneo(base);
    writeBytes(current + "x.png");
    for (int i = 0; i < 3; ++i) {
        const QString next = NewWorkFolderBeside(base, current);
        EXPECT_NE(next, current);
        EXPECT_TRUE(next.endsWith(u'/'));
        EXPECT_TRUE(QFileInfo(next).isDir());
    }
    EXPECT_TRUE(QFileInfo::exists(current + "x.png"));
}

TEST(Folders, CommandLineIsOneNameWithoutQuotes) {
    EXPECT_EQ(CommandLineFileName({"\"/home/u/My News.mssx\""}), "/home/u/My News.mssx");
    EXPECT_EQ(CommandLineFileName({"a.mssx", "b.mssx"}), "a.mssx b.mssx");
    EXPECT_EQ(CommandLineFileName({}), "");
}

TEST(Folders, CheckDosFielNameSpellsTheNameAsOnDisk) {
    QTemporaryDir dir;
    writeBytes(dir.filePath("Offerta.mssx"));
    const QString folder = dir.path() + "/";
    EXPECT_EQ(CheckDosFielName(folder + "offerta.MSSX"), folder + "Offerta.mssx");
    EXPECT_EQ(CheckDosFielName(folder + "Offerta.mssx"), folder + "Offerta.mssx");
    EXPECT_EQ(CheckDosFielName(folder + "none.mssx"), folder + "none.mssx");
}

class ProvisioningTest : public testing::Test {
protected:
    void SetUp() override {
        folders = Folders::derive(dir.filePath("app"), dir.filePath("docs"));
        QDir().mkpath(folders.appPath);
    }
    QTemporaryDir dir;
    Folders folders;
};

TEST_F(ProvisioningTest, FirstStartLaysDownTheSharedFolder) {
    const auto report = Provisioning::ensureDataFolders(folders, kDefaults, "es_ES");
    EXPECT_TRUE(report.failed.isEmpty()) << report.failed.join('\n').toStdString();
    for (const char* sub :
         {"Memory", "Template/Professional", "Template/Simple", "Icone Social", "SPAMASS"})
        EXPECT_TRUE(QFileInfo(folders.pathFileImp + sub).isDir()) << sub;
    for (const char* file : {"frmQuillora.dll", "FieldName.dll", "Social.dll", "colorSchema2.dll",
                             "colorSchema3.dll", "SyntaxEdit.dll", "crv_account.db"})
        EXPECT_TRUE(QFileInfo(folders.pathFileImp + file).isFile()) << file;
    QStringList lines;
    ASSERT_TRUE(TextFile::readLines(folders.languageChoiceFile(), lines).ok());
    EXPECT_EQ(lines.value(0), QString::fromUtf8("Español"));

    QStringList social;
    ASSERT_TRUE(TextFile::readLines(folders.pathFileImp + "Social.dll", social).ok());
    EXPECT_EQ(social.size(), 9);
}

TEST_F(ProvisioningTest, ExistingFilesAreNeverOverwritten) {
    QDir().mkpath(folders.pathFileImp);
    ASSERT_TRUE(TextFile::writeLines(folders.placementFile(), {"mine"}));
    ASSERT_TRUE(TextFile::writeLines(folders.languageChoiceFile(), {"Italiano"}));
    Provisioning::ensureDataFolders(folders, kDefaults, "en_US");
    const auto second = Provisioning::ensureDataFolders(folders, kDefaults, "en_US");
    EXPECT_TRUE(second.created.isEmpty()) << second.created.join('\n').toStdString();
    QStringList lines;
    TextFile::readLines(folders.placementFile(), lines);
    EXPECT_EQ(lines, QStringList({"mine"}));
    TextFile::readLines(folders.languageChoiceFile(), lines);
    EXPECT_EQ(lines, QStringList({"Italiano"}));
}

TEST(Provisioning, LanguageFromLocale) {
    EXPECT_EQ(Provisioning::languageForLocale("it_IT"), "Italiano");
    EXPECT_EQ(Provisioning::languageForLocale("it_CH"), "Italiano");
    EXPECT_EQ(Provisioning::languageForLocale("es_AR"), QString::fromUtf8("Español"));
    EXPECT_EQ(Provisioning::languageForLocale("de_DE"), "English");
    EXPECT_EQ(Provisioning::languageForLocale("C"), "English");
}

TEST(Provisioning, UserKindFollowsWriteAccess) {
    QTemporaryDir dir;
    EXPECT_EQ(Provisioning::userKind(dir.path()), 0);
    EXPECT_EQ(Provisioning::userKind(dir.filePath("missing")), 1);
    EXPECT_TRUE(QDir(dir.path()).isEmpty()); // the test leaves nothing behind
}

class AccountStoreTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(AccountStore::open(dir.filePath("crv_account.db"), "test").ok());
    }
    void TearDown() override { AccountStore::close("test"); }
    // An account the store accepts; each test changes what it is about.
    static Account account(const QString& name, const QString& address) {
        Account a;
        a.displayName = name;
        a.address = address;
        a.authentication = "login";
        a.security = "ssl";
        return a;
    }
    QTemporaryDir dir;
    AccountStore store{"test"};
};

TEST_F(AccountStoreTest, AddListRemove) {
    Account anna = account("Anna Rossi", "anna@example.com");
    anna.port = 65535; // the ports at either end are accepted
    Account bruno = account("Bruno", "bruno@example.org");
    bruno.port = 1;
    bruno.active = false;
    const auto id = store.add(anna);
    ASSERT_TRUE(id.has_value());
    const auto id2 = store.add(bruno);
    ASSERT_TRUE(id2.has_value());
    EXPECT_NE(*id, *id2);

    const auto all = store.list();
    ASSERT_TRUE(all.has_value());
    ASSERT_EQ(all->size(), 2);
    EXPECT_EQ(all->at(0).displayName, "Anna Rossi");
    EXPECT_EQ(all->at(0).port, 65535);
    EXPECT_TRUE(all->at(0).active);
    EXPECT_EQ(all->at(1).port, 1);
    EXPECT_FALSE(all->at(1).active);

    EXPECT_TRUE(store.remove(*id));
    QString error;
    EXPECT_FALSE(store.remove(*id, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(store.list()->size(), 1);
}

TEST_F(AccountStoreTest, UpdateReplacesOneAccountAndChecksIt) {
    const auto anna = store.add(account("Anna Rossi", "anna@example.com"));
    const auto bruno = store.add(account("Bruno", "bruno@example.org"));
    ASSERT_TRUE(anna && bruno);
    Account changed = *store.find(*anna);
    changed.address = "anna.rossi@example.com";
    changed.security = "auto";
    changed.active = false;
    ASSERT_TRUE(store.update(changed));
    EXPECT_EQ(store.find(*anna)->address, "anna.rossi@example.com");
    EXPECT_EQ(AccountStore::securityCaption(store.find(*anna)->security), "(AUTO)");
    EXPECT_FALSE(store.find(*anna)->active);
    EXPECT_EQ(store.find(*bruno)->address, "bruno@example.org");

    QString error;
    changed.address = "nobody";
    EXPECT_FALSE(store.update(changed, &error));
    EXPECT_TRUE(error.contains("nobody"));
    changed = *store.find(*bruno);
    changed.id = 999;
    EXPECT_FALSE(store.update(changed, &error));
    EXPECT_TRUE(error.contains("999"));
    EXPECT_EQ(store.list()->size(), 2);
}

struct BadAccount {
    const char* name;
    void (*spoil)(Account&);
    const char* reason; // what the error must name
};

void PrintTo(const BadAccount& c, std::ostream* os) {
    *os << c.name;
}

class AccountRejected : public AccountStoreTest, public testing::WithParamInterface<BadAccount> {};

TEST_P(AccountRejected, WithAReasonAndNothingStored) {
    Account a = account("X", "x@example.com");
    GetParam().spoil(a);
    QString error;
    EXPECT_FALSE(store.add(a, &error).has_value());
    EXPECT_TRUE(error.contains(QString::fromLatin1(GetParam().reason))) << error.toStdString();
    EXPECT_TRUE(store.list()->isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Accounts, AccountRejected,
    testing::Values(
        BadAccount{"blank_name", [](Account& a) { a.displayName = "  "; }, "display name"},
        BadAccount{"not_an_address", [](Account& a) { a.address = "not-an-address"; },
                   "not-an-address"},
        BadAccount{"port_zero", [](Account& a) { a.port = 0; }, "port 0"},
        BadAccount{"port_above_65535", [](Account& a) { a.port = 65536; }, "port 65536"},
        BadAccount{"unknown_authentication", [](Account& a) { a.authentication = "ntlm"; },
                   "authentication"},
        BadAccount{"unknown_security", [](Account& a) { a.security = "tls1.0"; }, "security"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(AccountStoreTest, NamesAreStoredAsDataNotSql) {
    Account a = account("Robert'); DROP TABLE Account;--", "r@example.com");
    a.authentication = "none";
    a.security = "none";
    QString error;
    ASSERT_TRUE(store.add(a, &error).has_value()) << error.toStdString();
    ASSERT_EQ(store.list()->size(), 1);
    EXPECT_EQ(store.list()->at(0).displayName, a.displayName);
}

} // namespace
