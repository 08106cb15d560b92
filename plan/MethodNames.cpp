// Method codes: display names, the profile type of a 2D code, and the reserved back-target key.
#include "plan/CPlan.h"
#include "resources/StringTable.h"

#include <cstdlib>

const std::u16string CPlan::K_BACKTARGET = u"BACKTARGET";

namespace {

struct MethodName {
    int code;
    const char16_t* name;
};

// Fixed display names of the method codes. 60/180 and 80/160 share a name on purpose; 70 and 90
// have none.
constexpr MethodName kNames[] = {
    {2, u"Tie Line"},       {10, u"Straight MD"},   {20, u"Straight TVD"},   {30, u"Inc Azi MD"},
    {40, u"Inc Azi TVD"},   {50, u"Inc Azi DLS"},   {51, u"Inc Azi DCT"},    {60, u"DLS Inc MD"},
    {80, u"DLS Azi MD"},    {100, u"DT1 MD"},       {101, u"CT1 MD"},        {105, u"BT1 MD"},
    {110, u"DT2 TVD"},      {111, u"CT2 TVD"},      {115, u"BT2 TVD"},       {120, u"DT3 Inc."},
    {121, u"CT3 Inc."},     {125, u"BT3 Inc."},     {130, u"DT4 Azm."},      {131, u"CT4 Azm."},
    {135, u"BT4 Azm."},     {140, u"StraightVSEC"}, {150, u"DLS Azi TVD"},   {160, u"DLS Azi MD"},
    {180, u"DLS Inc MD"},   {-10, u"BACK Target"},  {-20, u"BACK to CL"},    {-30, u"BACK to TVD"},
    {-40, u"BACK to Inc"},  {-50, u"BACK Surface"}, {-60, u"BACK to IncAz"}, {910, u"Online Inc"},
    {920, u"DT6 Curve"},    {925, u"BT6 Curve"},    {930, u"DT6 MDNSEW"},    {935, u"BT6 MDNSEW"},
    {1910, u"DT5 CH Tang"}, {1915, u"BT8 OL Inc"},  {1920, u"DT5 HC Tang"},  {1930, u"DT7 OL TVD"},
    {1935, u"BT7 OL TVD"},  {1940, u"OPT AL CUR"},  {1950, u"HZ Landing"},   {1960, u"OPT AL CD1"},
    {1970, u"OPT AL CD2"},  {2910, u"OPT AL DLS"},  {2925, u"BT5 CH Tang"},  {2930, u"DT8 HCH Inc"},
    {2940, u"OPT AL TAN"},  {2950, u"OPT AL TVD"},
};

}  // namespace

std::u16string CPlan::GetNameFromMethod(int code) {
    if (code >= 9999) return orrin::LoadText(orrin::IDS_INSERT_POINT);
    if (code == 0) return orrin::LoadText(orrin::IDS_NO_METHOD);
    const int r = std::abs(code) % 1000;
    if (r < 900 && code > 1000) {
        return orrin::LoadText(gettyp(code) == 1 ? orrin::IDS_SLANT : orrin::IDS_S_SHAPE);
    }
    for (const MethodName& m : kNames) {
        if (m.code == code) return m.name;
    }
    return std::u16string();
}

// Profile type of a 2D code from its thousands digit p (the extra stations) and hundreds digit h
// (the mask of holds present: 1 kick-off, 2 tangent, 4 final hold): 1 slant, 2 S-shape.
int CPlan::gettyp(int code) {
    const int p = code / 1000;
    const int h = (code - 1000 * p) / 100;
    switch (p) {
    case 0: return h == 0 ? 1 : 2;
    case 1: return (h == 1 || h == 2) ? 1 : 2;
    case 2: return h == 3 ? 1 : 2;
    default: return 2;
    }
}

bool CPlan::IsTargetKeyValid(const std::u16string& key) {
    return !key.empty() && key != K_BACKTARGET;
}
