// The string table, message inserts, and the error text with its line prefix.
#include <gtest/gtest.h>

#include "plan/CPlan.h"
#include "resources/StringTable.h"

namespace {

std::u16string message(int error, int first, int last) {
    CPlan plan;
    plan.m_nError = error;
    plan.m_nFirst = first;
    plan.m_nLast = last;
    return plan.ErrorMessage();
}

}  // namespace

TEST(ErrorMessage, EveryCodeWithItsPrefix) {
    // Line range 2..2 shows as "Line 3: ", except for the codes about the tie line (and 0); the
    // texts of -18, -19, -20 cross on purpose; codes outside the table are unknown.
    const struct {
        int code;
        const char16_t* text;
    } rows[] = {
        {-1, u"Can't build/turn fast enough, Increase DLS"},
        {-2, u"Can't build/turn fast enough, Increase DLS2"},
        {-3, u"Azimuth not lined-up on target for 2D profile"},
        {-4, u"Unknown Solution problem"},
        {-5, u"Line 1: Can't delete the tie line"},
        {-6, u"Line 1: Can't insert before the tie line"},
        {-7, u"Can't project to TVD from horizontal"},
        {-8, u"Toolface and azimuth don't line up"},
        {-9, u"Kick-off depth overlap, try increasing build rate"},
        {-10, u"Tangent depth overlap, try increasing build or drop rate"},
        {-11, u"Final hold depth overlap, try increasing build or drop rate"},
        {-12, u"Target is directly in line with the start point"},
        {-13, u"Solution problem, try reducing the tangent length"},
        {-14, u"Solution problem, increase tangent inclination"},
        {-15, u"Solution problem, decrease tangent inclination"},
        {-16, u"No target has been specified for this profile"},
        {-17, u"Can't reach vertical depth, try decreasing build rate"},
        {-18, u"Build has wrong value to reach inclination/TVD"},
        {-19, u"Turn has wrong value for turn to reach azimuth"},
        {-20, u"Can't reach vertical depth, try increasing build rate"},
        {-21, u"Unknown Error"},
        {1, u"Unknown Error"},
        {-2147483647 - 1, u"Unknown Error"},
    };
    EXPECT_EQ(message(0, 2, 2), u"No error");
    for (const auto& r : rows) {
        SCOPED_TRACE(r.code);
        const std::u16string text(r.text);
        EXPECT_EQ(message(r.code, 2, 2), text.rfind(u"Line", 0) == 0 ? text : u"Line 3: " + text);
    }
}

TEST(ErrorMessage, PrefixFollowsTheRange) {
    // A first beyond 100 shows line 1, a negative one counts as 0; a reversed range names the
    // first; a last of 100 or more is not shown.
    const struct {
        int first, last;
        const char16_t* prefix;
    } rows[] = {{2, 4, u"Lines 3-5"}, {150, 150, u"Line 1"}, {-3, 2, u"Lines 1-3"},
                {5, 3, u"Line 6"},    {2, 100, u"Line 3"},   {2, 99, u"Lines 3-100"}};
    for (const auto& r : rows) {
        SCOPED_TRACE(::testing::Message() << r.first << ".." << r.last);
        EXPECT_EQ(message(-4, r.first, r.last),
                  r.prefix + std::u16string(u": Unknown Solution problem"));
    }
}

TEST(StringTable, LabelsAndInserts) {
    using orrin::FormatText;
    using orrin::LoadText;
    EXPECT_EQ(LoadText(100), u"");
    // The label of the second part of a profile: "Part", the number, then "Hold".
    EXPECT_EQ(FormatText(LoadText(131), {FormatText(LoadText(130), {2})}),
              std::u16string(u"Part ") + u"2 Hold");
    EXPECT_EQ(FormatText(LoadText(134), {u"x "}), u"x Drop/Turn");
    // Inserts: order, reuse, plain %N, %% and missing arguments; an unclosed format is plain text.
    EXPECT_EQ(FormatText(u"%2!s!-%1!d!-%2!s!", {-17, u"a"}), u"a--17-a");
    EXPECT_EQ(FormatText(u"%1 and %%", {u"x"}), u"x and %");
    EXPECT_EQ(FormatText(u"%3!d! left", {1}), u"%3!d! left");
    EXPECT_EQ(FormatText(u"%1!d", {7}), u"7!d");
    EXPECT_EQ(FormatText(u"50% done%", {}), u"50% done%");
    EXPECT_EQ(FormatText(u"%1!d!", {-2147483647 - 1}), u"-2147483648");
}
