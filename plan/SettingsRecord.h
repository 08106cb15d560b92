// The settings record of a target line: the method parameters a line keeps in aux1 and aux2 of its
// last station, so that every re-solve of the plan (a later edit, a backward line, the bit walk)
// solves the line with its own settings. putm3d writes the record, gettar loads it back into the
// m_dMethodParamN fields before the line's routine runs. Internal header: not installed.
#pragma once

#include "plan/CPlan.h"

namespace orrin {

/// One code and the numbers N of the m_dMethodParamN it keeps in aux1 and aux2 (0: nothing kept).
struct SettingsRow {
    short code;
    int aux1, aux2;
};

/// Codes not listed keep no record: their settings are either stored where the line is put and
/// solved from there (1920 keeps its own behaviour), or they take none (920, 925, 930, 935, 1940).
constexpr SettingsRow kSettingsRecord[] = {
    {910, 1, 4},  {1910, 1, 0}, {1915, 4, 7}, {1930, 4, 0}, {1935, 4, 0},
    {1950, 1, 4}, {1960, 1, 0}, {1970, 2, 0}, {2910, 1, 2}, {2925, 7, 8},
    {2930, 1, 4}, {2940, 3, 0}, {2950, 5, 6},
};

/// The row of `code`, or nullptr when lines of that code keep no record.
inline const SettingsRow* settingsRow(int code) {
    for (const SettingsRow& row : kSettingsRecord)
        if (row.code == code) return &row;
    return nullptr;
}

/// The transfer field m_dMethodParamN for N = 1 ... 8; nullptr for any other N.
inline double CPlan::*methodParam(int n) {
    static constexpr double CPlan::*kParams[] = {
        &CPlan::m_dMethodParam1, &CPlan::m_dMethodParam2, &CPlan::m_dMethodParam3,
        &CPlan::m_dMethodParam4, &CPlan::m_dMethodParam5, &CPlan::m_dMethodParam6,
        &CPlan::m_dMethodParam7, &CPlan::m_dMethodParam8,
    };
    return (n >= 1 && n <= 8) ? kParams[n - 1] : nullptr;
}

}  // namespace orrin
