#include "Report.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "plan/CPlan.h"

namespace orrin_tool {

namespace {

std::string fixed(double v, int decimals) {
    char buf[64];
    if (std::fabs(v) < 0.5 * std::pow(10.0, -decimals)) v = 0.0;  // no "-0.00"
    std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
    return buf;
}

std::string padLeft(const std::string& s, std::size_t w) {
    return s.size() >= w ? s : std::string(w - s.size(), ' ') + s;
}

std::string padRight(const std::string& s, std::size_t w) {
    return s.size() >= w ? s : s + std::string(w - s.size(), ' ');
}

struct Column {
    const char* name;
    const char* unit;  ///< "L" for the length unit, "R" for the rate unit
    int decimals;
    bool rate;  ///< belongs to the rate columns (toolface, build, turn)
};

/// The values of a row in output units, in the order of kColumns.
std::vector<double> values(const Row& r, const Units& u) {
    const SStation& s = r.s;
    double azi = std::fmod(s.azi / kDegree, 360.0);
    if (azi < 0.0) azi += 360.0;
    return {s.md,
            s.inc / kDegree,
            azi,
            s.tvd,
            s.ns,
            s.ew,
            r.vs,
            u.rateOut(s.dls),
            s.tf / kDegree,
            u.rateOut(s.build),
            u.rateOut(s.turn)};
}

constexpr Column kColumns[] = {
    {"MD", "L", 2, false},   {"Inc", "deg", 2, false}, {"Azi", "deg", 2, false},
    {"TVD", "L", 2, false},  {"North", "L", 2, false}, {"East", "L", 2, false},
    {"VS", "L", 2, false},   {"DLS", "R", 2, false},   {"TF", "deg", 1, true},
    {"Build", "R", 2, true}, {"Turn", "R", 2, true},
};

/// The target a station shows: its key, except the library's own mark of a backward line's start.
std::string shownTarget(const SStation& s) {
    return s.target == CPlan::K_BACKTARGET ? std::string() : narrow(s.target);
}

}  // namespace

std::string exact(double v) {
    if (!std::isfinite(v)) return "null";
    char buf[64];
    for (int p = 15; p <= 17; ++p) {
        std::snprintf(buf, sizeof buf, "%.*g", p, v);
        if (std::strtod(buf, nullptr) == v) break;
    }
    return buf;
}

std::string jsonString(const std::string& s) {
    return nlohmann::json(s).dump();
}

std::string formatRows(const std::vector<Row>& rows, const Units& u, Format format, bool withRates,
                       const std::string& extraJson) {
    std::string out;
    auto unitOf = [&u](const Column& c) -> std::string {
        if (std::string(c.unit) == "L") return u.length();
        if (std::string(c.unit) == "R") return u.rate();
        return c.unit;
    };
    if (format == Format::Csv) {
        out += "line,method,part";
        for (const Column& c : kColumns)
            if (withRates || !c.rate) out += std::string(",") + c.name;
        out += ",target\n";
        for (const Row& r : rows) {
            out += std::to_string(r.line) + "," + r.method + "," + std::to_string(r.part);
            const std::vector<double> v = values(r, u);
            for (std::size_t i = 0; i < v.size(); ++i)
                if (withRates || !kColumns[i].rate) out += "," + exact(v[i]);
            out += "," + shownTarget(r.s) + "\n";
        }
        return out;
    }
    if (format == Format::Json) {
        out += "{\n  \"units\": " + jsonString(u.length()) +
               ",\n  \"rate_unit\": " + jsonString(u.rate()) + ",\n";
        if (!extraJson.empty()) out += "  " + extraJson + ",\n";
        out += "  \"stations\": [";
        for (std::size_t k = 0; k < rows.size(); ++k) {
            const Row& r = rows[k];
            out += k ? ",\n    {" : "\n    {";
            out += "\"line\": " + std::to_string(r.line);
            out +=
                ", \"method\": " + jsonString(r.method) + ", \"part\": " + std::to_string(r.part);
            const std::vector<double> v = values(r, u);
            for (std::size_t i = 0; i < v.size(); ++i) {
                if (!withRates && kColumns[i].rate) continue;
                std::string key = kColumns[i].name;
                for (char& c : key)
                    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
                out += ", \"" + key + "\": " + exact(v[i]);
            }
            if (!shownTarget(r.s).empty()) out += ", \"target\": " + jsonString(shownTarget(r.s));
            out += "}";
        }
        out += rows.empty() ? "]\n}\n" : "\n  ]\n}\n";
        return out;
    }

    // The aligned table: a header of names, a line of units, then the rows.
    std::size_t methodWidth = 6;
    auto label = [](const Row& r) {
        return r.part > 1 ? "  part " + std::to_string(r.part) : r.method;
    };
    for (const Row& r : rows) methodWidth = std::max(methodWidth, label(r).size());
    const std::size_t w = 10;
    std::string names = padLeft("Line", 4) + "  " + padRight("Method", methodWidth);
    std::string units = padLeft("", 4) + "  " + padRight("", methodWidth);
    for (const Column& c : kColumns) {
        if (!withRates && c.rate) continue;
        names += padLeft(c.name, w);
        units += padLeft(unitOf(c), w);
    }
    names += "  Target";
    out += names + "\n" + units + "\n";
    for (const Row& r : rows) {
        std::string line =
            padLeft(std::to_string(r.line), 4) + "  " + padRight(label(r), methodWidth);
        const std::vector<double> v = values(r, u);
        for (std::size_t i = 0; i < v.size(); ++i)
            if (withRates || !kColumns[i].rate)
                line += padLeft(fixed(v[i], kColumns[i].decimals), w);
        if (!shownTarget(r.s).empty()) line += "  " + shownTarget(r.s);
        out += line + "\n";
    }
    return out;
}

void writeAtomically(const std::string& path, const std::string& text) {
    const auto slash = path.find_last_of('/');
    const std::string dir = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::string tmp = dir + "." + base + ".tmp." + std::to_string(::getpid());
    std::FILE* f = std::fopen(tmp.c_str(), "wb");
    if (!f) throw InputError(path + ": cannot be written: " + std::strerror(errno));
    const bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    const bool closed = std::fclose(f) == 0;
    if (!written || !closed || std::rename(tmp.c_str(), path.c_str()) != 0) {
        const int err = errno;
        std::remove(tmp.c_str());
        throw InputError(path + ": cannot be written: " + std::strerror(err));
    }
}

}  // namespace orrin_tool
