// Method names, profile types and target keys.
#include <gtest/gtest.h>

#include "plan/CPlan.h"
#include "support/PlanAccess.h"

struct NamesTag;
template <>
struct PlanAccess<NamesTag> {
    static int gettyp(int code) { return CPlan::gettyp(code); }
};
using Names = PlanAccess<NamesTag>;

// A name of each family of lines, insert points, 2D profiles by their type; codes without a name.
TEST(MethodNames, EveryCodeOfTheTable) {
    const struct {
        int code;
        const char16_t* name;
    } rows[] = {{0, u"No Method"},       {2, u"Tie Line"},         {30, u"Inc Azi MD"},
                {51, u"Inc Azi DCT"},    {121, u"CT3 Inc."},       {180, u"DLS Inc MD"},
                {-20, u"BACK to CL"},    {-60, u"BACK to IncAz"},  {935, u"BT6 MDNSEW"},
                {1910, u"DT5 CH Tang"},  {1950, u"HZ Landing"},    {2950, u"OPT AL TVD"},
                {9999, u"Insert Point"}, {32767, u"Insert Point"}, {1100, u"Slant"},
                {3100, u"S-Shape"},      {1214, u"Slant"}};
    for (const auto& r : rows) {
        SCOPED_TRACE(r.code);
        EXPECT_EQ(CPlan::GetNameFromMethod(r.code), std::u16string(r.name));
    }
    for (int code : {1000, -15, 70, 940, -32768}) {
        SCOPED_TRACE(code);
        EXPECT_EQ(CPlan::GetNameFromMethod(code), u"");
    }
}

// Slant (1) or S-shape (2) from the thousands p and hundreds h: p 0 needs h 0, p 1 h 1 or 2, p 2 h 3.
TEST(MethodNames, ProfileTypeFromThousandsAndHundreds) {
    const struct {
        int code, type;
    } rows[] = {{99, 1},   {150, 2},  {1100, 1}, {1200, 1}, {1300, 2},
                {2300, 1}, {2200, 2}, {3100, 2}, {9000, 2}};
    for (const auto& r : rows) {
        SCOPED_TRACE(r.code);
        EXPECT_EQ(Names::gettyp(r.code), r.type);
    }
}

TEST(MethodNames, TargetKeys) {
    EXPECT_FALSE(CPlan::IsTargetKeyValid(u""));
    EXPECT_FALSE(CPlan::IsTargetKeyValid(u"BACKTARGET"));
    EXPECT_TRUE(CPlan::IsTargetKeyValid(u"backtarget"));
    EXPECT_TRUE(CPlan::IsTargetKeyValid(u"T1"));
}
