#include "core/message/BackgroundSound.h"
#include "core/message/BodyProperties.h"

#include <gtest/gtest.h>

using namespace quillora;

namespace {

TEST(BackgroundSound, InsertedTextForInfiniteAndForACount) {
    BackgroundSound::Choice c{"/home/anna/jingle.wav", true, 5};
    EXPECT_EQ(BackgroundSound::insertionHtml(c),
              "&nbsp;<bgsound balance=0 src=\"/home/anna/jingle.wav\" volume=0 loop=infinite>");
    c.infinite = false;
    c.loops = 3;
    EXPECT_EQ(BackgroundSound::insertionHtml(c),
              "&nbsp;<bgsound balance=0 src=\"/home/anna/jingle.wav\" volume=0 loop=3>");
    EXPECT_EQ(BackgroundSound::loopAttribute(c), "3");
}

TEST(BackgroundSound, TypedLoopCountIsItsNumericValue) {
    EXPECT_EQ(BackgroundSound::loopCount("12"), 12);
    EXPECT_EQ(BackgroundSound::loopCount(" 7 times"), 7);
    EXPECT_EQ(BackgroundSound::loopCount("many"), 0);
    EXPECT_EQ(BackgroundSound::loopCount(""), 0);
    EXPECT_EQ(BackgroundSound::loopCount("99999"), 0); // does not fit a 16-bit count
}

TEST(BodyProperties, ReadBackTakesDefaultsForUnnamedColours) {
    BodyProperties::BodyAttributes body;
    body.leftmargin = " 10 ";
    body.background = "img/bg.png";
    body.colours[BodyProperties::Background] = "#FF8000";
    const BodyProperties::Values v = BodyProperties::valuesFromBody(body);
    EXPECT_EQ(v.leftMargin, "10");
    EXPECT_EQ(v.topMargin, "");
    EXPECT_EQ(v.background, "img/bg.png");
    EXPECT_EQ(v.colours[BodyProperties::Background], 0x0080FF);
    EXPECT_EQ(v.colours[BodyProperties::Text], 0);
    EXPECT_EQ(v.colours[BodyProperties::VisitedLink], 0x800080);
}

TEST(BodyProperties, WriteBackOrderWritesEmptyMargins) {
    BodyProperties::Values v;
    v.marginWidth = "4";
    v.colours[BodyProperties::Background] = 0x0080FF;
    v.colours[BodyProperties::Link] = 0xFF0000;
    using S = BodyProperties::Step;
    const QList<S> expected{
        {true, "leftmargin", ""},      {true, "topmargin", ""},     {false, "leftmargin", ""},
        {false, "topmargin", ""},      {false, "marginwidth", "4"}, {false, "marginheight", ""},
        {false, "bgcolor", "#FF8000"}, {false, "text", "#000000"},  {false, "link", "#0000FF"},
        {false, "alink", "#000000"},   {false, "vlink", "#000000"}, {false, "background", ""},
    };
    EXPECT_EQ(BodyProperties::writeSteps(v), expected);
}

} // namespace
