// The text of the plan's current error, with the line prefix of the failing range.
#include "plan/CPlan.h"
#include "resources/StringTable.h"

namespace {

/// String-table number of the text of each error code 0, -1, ..., -20. The last three cross on
/// purpose: -18 and -19 take texts 122 and 123, -20 takes 121.
constexpr int kErrorText[] = {103, 104, 105, 106, 107, 108, 109, 110, 111, 112, 113,
                              114, 115, 116, 117, 118, 119, 120, 122, 123, 121};

/// Stations above this index are not shown in a prefix; the prefix then names line 1.
constexpr int MAX_SHOWN = 100;

}  // namespace

std::u16string CPlan::ErrorMessage() const {
    int f = m_nFirst;
    if (f < 0 || f > MAX_SHOWN) f = 0;
    const int l = m_nLast;
    const std::u16string prefix =
        (f < l && l < MAX_SHOWN)
            ? orrin::FormatText(orrin::LoadText(orrin::IDS_LINES_PREFIX), {f + 1, l + 1})
            : orrin::FormatText(orrin::LoadText(orrin::IDS_LINE_PREFIX), {f + 1});

    // The texts of 0, -5 and -6 stand alone (the last two carry their own "Line 1:").
    if (m_nError == 0 || m_nError == orrin::ERR_DELETE_TIE || m_nError == orrin::ERR_INSERT_TIE)
        return orrin::LoadText(kErrorText[-m_nError]);
    const int id = (m_nError < 0 && m_nError >= -20) ? kErrorText[-m_nError]
                                                     : static_cast<int>(orrin::IDS_UNKNOWN_ERROR);
    return orrin::FormatText(orrin::LoadText(id), {prefix});
}
