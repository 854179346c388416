#include "core/app/Version.h"

#include <gtest/gtest.h>

using namespace quillora;

namespace {

TEST(Version, MinorAlwaysHasTwoDigits) {
    EXPECT_EQ(Version::text(4, 11), "4.11");
    EXPECT_EQ(Version::text(4, 5), "4.05");
    EXPECT_EQ(Version::text(4, 0), "4.00");
    EXPECT_EQ(Version::text(10, 123), "10.23"); // the last two digits, as the label always did
}

} // namespace
