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

// Every named code, insert points and 2D profiles by their type; then codes without a name.
TEST(MethodNames, EveryCodeOfTheTable) {
    const struct {
        int code;
        const char16_t* name;
    } rows[] = {{0, u"No Method"},       {2, u"Tie Line"},        {10, u"Straight MD"},
                {20, u"Straight TVD"},   {30, u"Inc Azi MD"},     {40, u"Inc Azi TVD"},
                {50, u"Inc Azi DLS"},    {51, u"Inc Azi DCT"},    {60, u"DLS Inc MD"},
                {80, u"DLS Azi MD"},     {100, u"DT1 MD"},        {101, u"CT1 MD"},
                {105, u"BT1 MD"},        {110, u"DT2 TVD"},       {111, u"CT2 TVD"},
                {115, u"BT2 TVD"},       {120, u"DT3 Inc."},      {121, u"CT3 Inc."},
                {125, u"BT3 Inc."},      {130, u"DT4 Azm."},      {131, u"CT4 Azm."},
                {135, u"BT4 Azm."},      {140, u"StraightVSEC"},  {150, u"DLS Azi TVD"},
                {160, u"DLS Azi MD"},    {180, u"DLS Inc MD"},    {-10, u"BACK Target"},
                {-20, u"BACK to CL"},    {-30, u"BACK to TVD"},   {-40, u"BACK to Inc"},
                {-50, u"BACK Surface"},  {-60, u"BACK to IncAz"}, {910, u"Online Inc"},
                {920, u"DT6 Curve"},     {925, u"BT6 Curve"},     {930, u"DT6 MDNSEW"},
                {935, u"BT6 MDNSEW"},    {1910, u"DT5 CH Tang"},  {1915, u"BT8 OL Inc"},
                {1920, u"DT5 HC Tang"},  {1930, u"DT7 OL TVD"},   {1935, u"BT7 OL TVD"},
                {1940, u"OPT AL CUR"},   {1950, u"HZ Landing"},   {1960, u"OPT AL CD1"},
                {1970, u"OPT AL CD2"},   {2910, u"OPT AL DLS"},   {2925, u"BT5 CH Tang"},
                {2930, u"DT8 HCH Inc"},  {2940, u"OPT AL TAN"},   {2950, u"OPT AL TVD"},
                {9999, u"Insert Point"}, {1100, u"Slant"},        {3100, u"S-Shape"}};
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
