// The string table of the library and its message-insert formatter.
#include "resources/StringTable.h"

#include <iterator>
#include <vector>

namespace orrin {

namespace {

struct Entry {
    int id;
    const char16_t* text;
};

// The user texts of the library, kept with the code so that the built library carries them.
constexpr Entry kTable[] = {
    {101, u"Lines %1!d!-%2!d!:"},
    {102, u"Line %1!d!:"},
    {103, u"No error"},
    {104, u"%1!s! Can't build/turn fast enough, Increase DLS"},
    {105, u"%1!s! Can't build/turn fast enough, Increase DLS2"},
    {106, u"%1!s! Azimuth not lined-up on target for 2D profile"},
    {107, u"%1!s! Unknown Solution problem"},
    {108, u"Line 1: Can't delete the tie line"},
    {109, u"Line 1: Can't insert before the tie line"},
    {110, u"%1!s! Can't project to TVD from horizontal"},
    {111, u"%1!s! Toolface and azimuth don't line up"},
    {112, u"%1!s! Kick-off depth overlap, try increasing build rate"},
    {113, u"%1!s! Tangent depth overlap, try increasing build or drop rate"},
    {114, u"%1!s! Final hold depth overlap, try increasing build or drop rate"},
    {115, u"%1!s! Target is directly in line with the start point"},
    {116, u"%1!s! Solution problem, try reducing the tangent length"},
    {117, u"%1!s! Solution problem, increase tangent inclination"},
    {118, u"%1!s! Solution problem, decrease tangent inclination"},
    {119, u"%1!s! No target has been specified for this profile"},
    {120, u"%1!s! Can't reach vertical depth, try decreasing build rate"},
    {121, u"%1!s! Can't reach vertical depth, try increasing build rate"},
    {122, u"%1!s! Build has wrong value to reach inclination/TVD"},
    {123, u"%1!s! Turn has wrong value for turn to reach azimuth"},
    {124, u"%1!s! Unknown Error"},
    {125, u"Insert Point"},
    {126, u"No Method"},
    {127, u"Slant"},
    {128, u"S-Shape"},
    {129, u"No Method"},
    {130, u"Part %1!d! "},
    {131, u"%1!s!Hold"},
    {132, u"%1!s!Build/Turn"},
    {133, u"%1!s!Build"},
    {134, u"%1!s!Drop/Turn"},
    {135, u"%1!s!Drop"},
    {136, u"%1!s!Flat Turn"},
};

std::u16string decimal(int value) {
    // Widen first so that the most negative int prints without overflow.
    long long v = value;
    const bool negative = v < 0;
    if (negative) v = -v;
    std::u16string digits;
    do {
        digits.insert(digits.begin(), static_cast<char16_t>(u'0' + v % 10));
        v /= 10;
    } while (v != 0);
    if (negative) digits.insert(digits.begin(), u'-');
    return digits;
}

bool isDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

}  // namespace

std::u16string LoadText(int id) {
    for (const Entry& e : kTable) {
        if (e.id == id) return e.text;
    }
    return std::u16string();
}

std::u16string FormatText(const std::u16string& fmt, std::initializer_list<TextArg> args) {
    const std::vector<TextArg> list(args);
    std::u16string out;
    out.reserve(fmt.size() + 32);
    std::size_t i = 0;
    while (i < fmt.size()) {
        const char16_t c = fmt[i];
        if (c != u'%' || i + 1 >= fmt.size()) {
            out.push_back(c);
            ++i;
            continue;
        }
        if (fmt[i + 1] == u'%') {
            out.push_back(u'%');
            i += 2;
            continue;
        }
        // %N with N of one or two digits, then an optional !format! that selects the conversion.
        std::size_t j = i + 1;
        int index = 0;
        while (j < fmt.size() && isDigit(fmt[j]) && j < i + 3) {
            index = index * 10 + (fmt[j] - u'0');
            ++j;
        }
        if (j == i + 1 || index == 0) {
            out.push_back(c);
            ++i;
            continue;
        }
        std::size_t end = j;
        if (end < fmt.size() && fmt[end] == u'!') {
            const std::size_t close = fmt.find(u'!', end + 1);
            if (close != std::u16string::npos) end = close + 1;
        }
        if (static_cast<std::size_t>(index) > list.size()) {
            out.append(fmt, i, end - i);
        } else {
            const TextArg& a = list[static_cast<std::size_t>(index) - 1];
            out += a.isInt ? decimal(a.number) : a.text;
        }
        i = end;
    }
    return out;
}

}  // namespace orrin
