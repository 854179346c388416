#include "core/tools/TemplateStore.h"

#include "core/TestFiles.h"

#include <QTemporaryDir>

namespace TemplateStore = quillora::TemplateStore;

struct ThumbnailCase {
    const char* file;
    bool listed;
};

class TemplateThumbnailTest : public ::testing::TestWithParam<ThumbnailCase> {};

TEST_P(TemplateThumbnailTest, ExtensionIsTheTextAfterTheFirstDot) {
    EXPECT_EQ(TemplateStore::isThumbnail(QString::fromUtf8(GetParam().file)), GetParam().listed);
}

INSTANTIATE_TEST_SUITE_P(
    Names, TemplateThumbnailTest,
    ::testing::Values(ThumbnailCase{"Offer.jpg", true}, ThumbnailCase{"Offer.JPG", true},
                      ThumbnailCase{"Offer.png", false}, ThumbnailCase{"Offer.v2.jpg", false},
                      ThumbnailCase{"Offer.jpeg", false}, ThumbnailCase{"jpg", false}));

TEST(TemplateStoreTest, ThumbnailOpensThePageInItsOwnFolder) {
    EXPECT_EQ(TemplateStore::pagePath(QStringLiteral("/t/Template/Simple/Offer.jpg")),
              QStringLiteral("/t/Template/Simple/Offer/Offer.html"));
    EXPECT_EQ(TemplateStore::pagePath(QStringLiteral("C:\\T\\Simple\\Offer.JPG")),
              QStringLiteral("C:\\T\\Simple\\Offer/Offer.html"));
}

TEST(TemplateStoreTest, ListsProfessionalThenSimpleAndSkipsOtherFiles) {
    QTemporaryDir dir;
    const QString root = dir.path() + QStringLiteral("/Template/");
    writeBytes(root + QStringLiteral("Simple/Plain.jpg"), "x");
    writeBytes(root + QStringLiteral("Simple/Plain.png"), "x");
    writeBytes(root + QStringLiteral("Simple/Plain.v2.jpg"), "x");
    writeBytes(root + QStringLiteral("Professional/Report.JPG"), "x");
    writeBytes(root + QStringLiteral("Other/Lost.jpg"), "x");
    const auto all = TemplateStore::listAll(root);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].category, QStringLiteral("Professional"));
    EXPECT_EQ(all[0].name, QStringLiteral("Report"));
    EXPECT_EQ(all[0].page, root + QStringLiteral("Professional/Report/Report.html"));
    EXPECT_EQ(all[1].category, QStringLiteral("Simple"));
    EXPECT_EQ(all[1].thumbnail, root + QStringLiteral("Simple/Plain.jpg"));
    // A missing category folder leaves only its own rows out.
    EXPECT_TRUE(TemplateStore::list(root, QStringLiteral("Nothing")).empty());
}
