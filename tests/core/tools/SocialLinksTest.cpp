#include "core/tools/SocialLinks.h"
#include "core/app/TextFile.h"

#include "core/TestFiles.h"

#include <QTemporaryDir>

namespace SocialLinks = quillora::SocialLinks;

struct ResizeCase {
    const char* tag;
    int size;
    const char* name;
};

class SocialResizeTest : public ::testing::TestWithParam<ResizeCase> {};

TEST_P(SocialResizeTest, PreviewNameFollowsTheSize) {
    EXPECT_EQ(SocialLinks::resized(QString::fromLatin1(GetParam().tag), GetParam().size),
              QString::fromLatin1(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, SocialResizeTest,
    ::testing::Values(ResizeCase{"07_64x64_vimeo.jpg", 1, "07_32x32_vimeo.jpg"},
                      ResizeCase{"07_32x32_vimeo.jpg", 0, "07_16x16_vimeo.jpg"},
                      ResizeCase{"20_16x16_myspace.jpg", 3, "20_64x64_myspace.jpg"},
                      // no selection: no size and no such file
                      ResizeCase{"01_64x64_facebook.jpg", -1, "01__facebook.jpg"}));

TEST(SocialLinksTest, IconNamesCoverEveryNetworkDesignAndSize) {
    EXPECT_EQ(SocialLinks::iconFileName(1, QStringLiteral("64x64"), 0, QStringLiteral(".jpg")),
              QStringLiteral("01_64x64_facebook.jpg"));
    QSet<QString> all;
    for (int n = 0; n < SocialLinks::kNetworks; ++n)
        for (int d = 1; d <= SocialLinks::kDesigns; ++d)
            for (const QString& s : SocialLinks::sizes())
                for (const char* ext : {".jpg", ".png"})
                    all.insert(SocialLinks::iconFileName(d, s, n, QString::fromLatin1(ext)));
    EXPECT_EQ(all.size(), 1440);
    EXPECT_TRUE(all.contains(QStringLiteral("07_32x32_vimeo.png")));
}

TEST(SocialLinksTest, FragmentLinksThePngTwin) {
    EXPECT_EQ(SocialLinks::linkFragment(QStringLiteral("https://vimeo.example/us"),
                                        QStringLiteral("/data/Icone Social/"),
                                        QStringLiteral("07_32x32_vimeo.jpg")),
              QStringLiteral("<a href=\"https://vimeo.example/us\"><img src=\"/data/Icone "
                             "Social/07_32x32_vimeo.png\" border=\"0\" /></a>"));
    EXPECT_EQ(
        SocialLinks::linkFragment(QString(), QStringLiteral("/i/"),
                                  QStringLiteral("01_16x16_google.jpg")),
        QStringLiteral("<a href=\"\"><img src=\"/i/01_16x16_google.png\" border=\"0\" /></a>"));
}

TEST(SocialLinksTest, AddressFileHoldsNineLines) {
    QTemporaryDir dir;
    const QString path = dir.path() + QStringLiteral("/Social.dll");
    EXPECT_TRUE(SocialLinks::readAddresses(path).isEmpty());
    ASSERT_TRUE(SocialLinks::writeAddresses(
        path, {QStringLiteral("https://fb.example/a"), QString(), QStringLiteral("g")}));
    const QByteArray bytes = readBytes(path);
    EXPECT_EQ(bytes, quillora::TextFile::encodeUtf16LE(QStringLiteral(
                         "https://fb.example/a\r\n\r\ng\r\n\r\n\r\n\r\n\r\n\r\n\r\n")));
    const QStringList back = SocialLinks::readAddresses(path);
    ASSERT_EQ(back.size(), 9);
    EXPECT_EQ(back[0], QStringLiteral("https://fb.example/a"));
    EXPECT_EQ(back[2], QStringLiteral("g"));
    // A short file written by hand fills what it can.
    writeBytes(path, "one\r\ntwo\r\n");
    EXPECT_EQ(SocialLinks::readAddresses(path),
              (QStringList{QStringLiteral("one"), QStringLiteral("two")}));
}
