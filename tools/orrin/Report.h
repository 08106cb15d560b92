// Writing stations out: an aligned table for people, CSV and JSON for other programs.
#pragma once

#include <string>
#include <vector>

#include "Common.h"
#include "plan/Records.h"

namespace orrin_tool {

/// One row of output: a station of the plan, or a point along it.
struct Row {
    int line = 0;        ///< the library's line number (station index + 1)
    std::string method;  ///< method name of the line
    int part = 1;        ///< which stored station of its line (1 the first)
    SStation s;          ///< the values, in library units
    double vs = 0.0;     ///< vertical section [L]
};

enum class Format { Table, Csv, Json };

/// The rows in the format asked for. `extra` goes into the JSON object beside "stations" (an
/// object's members as JSON text, e.g. "\"error\": null"); `withRates` keeps the toolface, build and
/// turn columns, which points along a line do not have.
std::string formatRows(const std::vector<Row>& rows, const Units& units, Format format,
                       bool withRates, const std::string& extraJson = "");

/// A number for JSON and CSV: shortest text that reads back as the same double.
std::string exact(double v);

/// A JSON string literal.
std::string jsonString(const std::string& s);

/// Writes `text` to `path` through a temporary file in the same folder and a rename, so that the
/// file is either the old one or the whole new one. Throws InputError when it cannot.
void writeAtomically(const std::string& path, const std::string& text);

}  // namespace orrin_tool
