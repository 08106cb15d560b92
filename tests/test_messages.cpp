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
    // Line range 2..2 shows as "Line 3:"; the texts of -18, -19, -20 cross on purpose.
    const struct {
        int code;
        const char16_t* text;
    } rows[] = {
        {0, u"No error"},
        {-1, u"Line 3: Can't build/turn fast enough, Increase DLS"},
        {-2, u"Line 3: Can't build/turn fast enough, Increase DLS2"},
        {-3, u"Line 3: Azimuth not lined-up on target for 2D profile"},
        {-4, u"Line 3: Unknown Solution problem"},
        {-5, u"Line 1: Can't delete the tie line"},
        {-6, u"Line 1: Can't insert before the tie line"},
        {-7, u"Line 3: Can't project to TVD from horizontal"},
        {-8, u"Line 3: Toolface and azimuth don't line up"},
        {-9, u"Line 3: Kick-off depth overlap, try increasing build rate"},
        {-10, u"Line 3: Tangent depth overlap, try increasing build or drop rate"},
        {-11, u"Line 3: Final hold depth overlap, try increasing build or drop rate"},
        {-12, u"Line 3: Target is directly in line with the start point"},
        {-13, u"Line 3: Solution problem, try reducing the tangent length"},
        {-14, u"Line 3: Solution problem, increase tangent inclination"},
        {-15, u"Line 3: Solution problem, decrease tangent inclination"},
        {-16, u"Line 3: No target has been specified for this profile"},
        {-17, u"Line 3: Can't reach vertical depth, try decreasing build rate"},
        {-18, u"Line 3: Build has wrong value to reach inclination/TVD"},
        {-19, u"Line 3: Turn has wrong value for turn to reach azimuth"},
        {-20, u"Line 3: Can't reach vertical depth, try increasing build rate"},
        {-21, u"Line 3: Unknown Error"},
        {1, u"Line 3: Unknown Error"},
        {-2147483647 - 1, u"Line 3: Unknown Error"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.code);
        EXPECT_EQ(message(r.code, 2, 2), std::u16string(r.text));
    }
}

TEST(ErrorMessage, PrefixFollowsTheRange) {
    const struct {
        int first, last;
        const char16_t* text;
    } rows[] = {
        {2, 2, u"Line 3: Unknown Solution problem"},
        {2, 4, u"Lines 3-5: Unknown Solution problem"},
        {150, 150, u"Line 1: Unknown Solution problem"},  // first beyond 100 shows line 1
        {-3, 2, u"Lines 1-3: Unknown Solution problem"},  // a negative first counts as 0
        {5, 3, u"Line 6: Unknown Solution problem"},      // a reversed range names the first
        {2, 100, u"Line 3: Unknown Solution problem"},    // a last of 100 or more is not shown
        {2, 99, u"Lines 3-100: Unknown Solution problem"},
        {100, 100, u"Line 101: Unknown Solution problem"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(::testing::Message() << r.first << ".." << r.last);
        EXPECT_EQ(message(-4, r.first, r.last), std::u16string(r.text));
    }
}

TEST(StringTable, LabelsAndInserts) {
    using orrin::FormatText;
    using orrin::LoadText;
    EXPECT_EQ(LoadText(100), u"");
    EXPECT_EQ(LoadText(137), u"");
    EXPECT_EQ(LoadText(129), u"No Method");
    // The label of the second part of a profile: "Part", the number, then "Hold".
    EXPECT_EQ(FormatText(LoadText(131), {FormatText(LoadText(130), {2})}),
              std::u16string(u"Part ") + u"2 Hold");
    EXPECT_EQ(FormatText(LoadText(132), {u""}), u"Build/Turn");
    EXPECT_EQ(FormatText(LoadText(134), {u"x "}), u"x Drop/Turn");
    EXPECT_EQ(FormatText(LoadText(136), {u""}), u"Flat Turn");
    EXPECT_EQ(FormatText(LoadText(133), {u""}), u"Build");
    EXPECT_EQ(FormatText(LoadText(135), {u""}), u"Drop");
    // Inserts: order, reuse, plain %N, %% and missing arguments.
    EXPECT_EQ(FormatText(u"%2!s!-%1!d!-%2!s!", {-17, u"a"}), u"a--17-a");
    EXPECT_EQ(FormatText(u"%1 and %%", {u"x"}), u"x and %");
    EXPECT_EQ(FormatText(u"%3!d! left", {1}), u"%3!d! left");
    EXPECT_EQ(FormatText(u"50% done%", {}), u"50% done%");
    EXPECT_EQ(FormatText(u"%1!d!", {-2147483647 - 1}), u"-2147483648");
    EXPECT_EQ(FormatText(u"%1!d", {7}), u"7!d");  // an unclosed format is plain text
}
