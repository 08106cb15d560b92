// The library's string table (numbers 101 to 136) and its message formatting.
//
// Texts use message-style inserts: "%1!d!" is the first argument as a decimal integer, "%2!s!" the
// second as a string; "%1" alone inserts the first argument as it is, "%%" gives one "%".
#pragma once

#include <initializer_list>
#include <string>

#include "plan/OrrinExport.h"

namespace orrin {

/// Numbers of the string table.
enum StringId : int {
    IDS_LINES_PREFIX = 101,   ///< "Lines %1!d!-%2!d!:"
    IDS_LINE_PREFIX = 102,    ///< "Line %1!d!:"
    IDS_NO_ERROR = 103,       ///< "No error"; the error texts follow up to 124
    IDS_UNKNOWN_ERROR = 124,  ///< "%1!s! Unknown Error"
    IDS_INSERT_POINT = 125,   ///< "Insert Point"
    IDS_NO_METHOD = 126,      ///< "No Method"
    IDS_SLANT = 127,          ///< "Slant"
    IDS_S_SHAPE = 128,        ///< "S-Shape"
    IDS_FAMILY_NONE = 129,    ///< "No Method" (family label)
    IDS_PART = 130,           ///< "Part %1!d! "
    IDS_HOLD = 131,           ///< "%1!s!Hold"
    IDS_BUILD_TURN = 132,     ///< "%1!s!Build/Turn"
    IDS_BUILD = 133,          ///< "%1!s!Build"
    IDS_DROP_TURN = 134,      ///< "%1!s!Drop/Turn"
    IDS_DROP = 135,           ///< "%1!s!Drop"
    IDS_FLAT_TURN = 136,      ///< "%1!s!Flat Turn"
};

/// The text of string-table entry id; the empty string for a number outside the table.
ORRIN_API std::u16string LoadText(int id);

/// One insert of FormatText: an integer or a string.
struct ORRIN_API TextArg {
    TextArg(int value) : isInt(true), number(value) {}
    TextArg(std::u16string value) : isInt(false), text(std::move(value)) {}
    TextArg(const char16_t* value) : isInt(false), text(value ? value : u"") {}
    bool isInt;
    int number = 0;
    std::u16string text;
};

/// fmt with its inserts %1 ... %99 replaced by the arguments. An insert whose argument is missing
/// is copied as it stands; an integer asked for as a string (or the other way round) is written as
/// what it is.
ORRIN_API std::u16string FormatText(const std::u16string& fmt, std::initializer_list<TextArg> args);

}  // namespace orrin
