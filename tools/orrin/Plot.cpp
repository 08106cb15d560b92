#include "Plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>

namespace orrin_tool {

namespace {

// Page layout [px].
constexpr double kWidth = 1240.0, kHeight = 720.0;
constexpr double kPanelTop = 110.0, kPanelSize = 500.0;
constexpr double kLeftPanel = 95.0, kRightPanel = 715.0;
/// Points drawn along the whole plan; each line gets its share by length, at least a few.
constexpr double kSamples = 900.0;
constexpr int kMinSamplesPerPart = 4;

const char* kTargetColour = "#b00020";
const char* kFailColour = "#d7191c";

const char* familyColour(int family) {
    switch (family) {
    case 10: return "#000000";
    case 20: return "#7f7f7f";
    case 90: return "#0072b2";
    case 100: return "#56b4e9";
    case 30: return "#e69f00";
    case 40: return "#009e73";
    case 60: return "#cc79a7";
    case 70: return "#8e44ad";
    case 110: return "#1b9e77";  // optimum align
    case 140: return "#e7298a";  // horizontal landing
    case 150: return "#8c564b";  // backward lines
    default: return "#d55e00";   // curves to a target
    }
}

/// The legend entry of a family: the curve-to-target families share one colour and one entry.
int legendFamily(int family) {
    if (family == 45 || family == 55 || family == 85 || family == 125 || family == 130 ||
        family == 135)
        return 120;
    return family == 50 || family == 80 || family == 120 ? 120 : family;
}

const char* legendLabel(int family) {
    return family == 120 ? "Curve to target" : familyLabel(family);
}

/// Rough width of a label at the plot's font size [px].
double textWidth(const std::string& s) {
    return 6.8 * static_cast<double>(s.size());
}

std::string esc(const std::string& s) {
    std::string out;
    for (char c : s) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out.push_back(c);
        }
    }
    return out;
}

std::string num(double v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.1f", v);
    return buf;
}

/// A tick step of 1, 2 or 5 times a power of ten giving about `count` ticks over `range`.
double niceStep(double range, double count) {
    const double raw = range / count;
    const double p = std::pow(10.0, std::floor(std::log10(raw)));
    for (double m : {1.0, 2.0, 2.5, 5.0, 10.0})
        if (raw <= m * p) return m * p;
    return 10.0 * p;
}

std::string tickLabel(double v, double step) {
    char buf[32];
    if (std::fabs(v) < 1e-9 * step) v = 0.0;
    std::snprintf(buf, sizeof buf, step >= 1.0 ? "%.0f" : "%.1f", v);
    return buf;
}

struct Pt {
    double x, y;
};

/// One panel: data x to the right, data y up (plan view) or down (section view), equal scales.
struct Panel {
    double left, top, size;
    double x0 = 0, x1 = 1, y0 = 0, y1 = 1;  // data range shown
    bool yDown = false;

    void fit(const std::vector<Pt>& pts) {
        double a = 1e300, b = -1e300, c = 1e300, d = -1e300;
        for (const Pt& p : pts) {
            a = std::min(a, p.x), b = std::max(b, p.x);
            c = std::min(c, p.y), d = std::max(d, p.y);
        }
        double span = std::max({b - a, d - c, 1.0}) * 1.1;
        const double cx = 0.5 * (a + b), cy = 0.5 * (c + d);
        x0 = cx - 0.5 * span, x1 = cx + 0.5 * span;
        y0 = cy - 0.5 * span, y1 = cy + 0.5 * span;
    }
    double sx(double x) const { return left + (x - x0) / (x1 - x0) * size; }
    double sy(double y) const {
        const double f = (y - y0) / (y1 - y0);
        return yDown ? top + f * size : top + (1.0 - f) * size;
    }
};

void axes(std::string& svg, const Panel& p, const std::string& title, const std::string& xName,
          const std::string& yName) {
    svg += "<g class=\"axes\">\n";
    svg += "<text x=\"" + num(p.left + p.size / 2) + "\" y=\"" + num(p.top - 14) +
           "\" text-anchor=\"middle\" font-size=\"15\" font-weight=\"bold\">" + esc(title) +
           "</text>\n";
    const double step = niceStep(p.x1 - p.x0, 6.0);
    for (double v = std::ceil(p.x0 / step) * step; v <= p.x1; v += step) {
        const double x = p.sx(v);
        svg += "<line x1=\"" + num(x) + "\" y1=\"" + num(p.top) + "\" x2=\"" + num(x) + "\" y2=\"" +
               num(p.top + p.size) + "\" stroke=\"#e4e4e4\"/>\n";
        svg += "<line x1=\"" + num(x) + "\" y1=\"" + num(p.top + p.size) + "\" x2=\"" + num(x) +
               "\" y2=\"" + num(p.top + p.size + 5) + "\" stroke=\"#333\"/>\n";
        svg += "<text x=\"" + num(x) + "\" y=\"" + num(p.top + p.size + 19) +
               "\" text-anchor=\"middle\">" + tickLabel(v, step) + "</text>\n";
    }
    for (double v = std::ceil(p.y0 / step) * step; v <= p.y1; v += step) {
        const double y = p.sy(v);
        svg += "<line x1=\"" + num(p.left) + "\" y1=\"" + num(y) + "\" x2=\"" +
               num(p.left + p.size) + "\" y2=\"" + num(y) + "\" stroke=\"#e4e4e4\"/>\n";
        svg += "<line x1=\"" + num(p.left - 5) + "\" y1=\"" + num(y) + "\" x2=\"" + num(p.left) +
               "\" y2=\"" + num(y) + "\" stroke=\"#333\"/>\n";
        svg += "<text x=\"" + num(p.left - 8) + "\" y=\"" + num(y + 4) + "\" text-anchor=\"end\">" +
               tickLabel(v, step) + "</text>\n";
    }
    svg += "<rect x=\"" + num(p.left) + "\" y=\"" + num(p.top) + "\" width=\"" + num(p.size) +
           "\" height=\"" + num(p.size) + "\" fill=\"none\" stroke=\"#333\"/>\n";
    svg += "<text x=\"" + num(p.left + p.size / 2) + "\" y=\"" + num(p.top + p.size + 42) +
           "\" text-anchor=\"middle\" font-size=\"13\">" + esc(xName) + "</text>\n";
    const double yx = p.left - 62, yy = p.top + p.size / 2;
    svg += "<text x=\"" + num(yx) + "\" y=\"" + num(yy) +
           "\" text-anchor=\"middle\" font-size=\"13\"" + " transform=\"rotate(-90 " + num(yx) +
           " " + num(yy) + ")\">" + esc(yName) + "</text>\n";
    svg += "</g>\n";
}

/// A polyline clipped to its panel by a clip path.
std::string polyline(const Panel& p, const std::vector<Pt>& pts, const char* colour,
                     const std::string& extra) {
    std::string s = "<polyline fill=\"none\" stroke=\"" + std::string(colour) +
                    "\" stroke-width=\"2.4\" stroke-linejoin=\"round\"" + extra + " points=\"";
    for (const Pt& q : pts) s += num(p.sx(q.x)) + "," + num(p.sy(q.y)) + " ";
    s += "\"/>\n";
    return s;
}

}  // namespace

std::string plotSvg(const PlanInput& in, Solution& sol) {
    CPlan& plan = sol.plan;
    const std::string L = in.units.length();

    // Points along every solved part, in both views, each part with its line's family.
    struct Part {
        int family;
        std::vector<Pt> section, planView;
    };
    std::vector<Part> parts;
    std::vector<Pt> allSection, allPlan;
    const auto& st = sol.stations;
    const double total = st.size() > 1 ? st.back().s.md - st.front().s.md : 0.0;
    auto vsOf = [&plan](const SStation& s) { return plan.GetVS(s.ns, s.ew); };
    for (std::size_t k = 1; k < st.size(); ++k) {
        const SStation &a = st[k - 1].s, &b = st[k].s;
        Part part{st[k].family, {}, {}};
        const double course = b.md - a.md;
        const int n = std::max(kMinSamplesPerPart,
                               total > 0.0 ? static_cast<int>(kSamples * course / total) : 0);
        part.section.push_back({vsOf(a), a.tvd});
        part.planView.push_back({a.ew, a.ns});
        for (int i = 1; i < n; ++i) {
            if (!plan.PlanPointAt(CPlan::PLAN_MD, a.md + course * i / n)) continue;
            const SStation& q = plan.m_stnA;
            part.section.push_back({vsOf(q), q.tvd});
            part.planView.push_back({q.ew, q.ns});
        }
        part.section.push_back({vsOf(b), b.tvd});
        part.planView.push_back({b.ew, b.ns});
        allSection.insert(allSection.end(), part.section.begin(), part.section.end());
        allPlan.insert(allPlan.end(), part.planView.begin(), part.planView.end());
        parts.push_back(part);
    }
    const SStation& tie = st.front().s;
    allSection.push_back({vsOf(tie), tie.tvd});
    allPlan.push_back({tie.ew, tie.ns});
    for (const STarget& t : in.targets) {
        allSection.push_back({plan.GetVS(t.ns, t.ew), t.tvd});
        allPlan.push_back({t.ew, t.ns});
    }

    Panel section{kLeftPanel, kPanelTop, kPanelSize};
    section.yDown = true;
    section.fit(allSection);
    Panel planView{kRightPanel, kPanelTop, kPanelSize};
    planView.fit(allPlan);

    std::string svg =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
        num(kWidth) + "\" height=\"" + num(kHeight) + "\" viewBox=\"0 0 " + num(kWidth) + " " +
        num(kHeight) +
        "\" font-family=\"DejaVu Sans, Arial, Helvetica, sans-serif\" font-size=\"11\">\n"
        "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
    svg += "<defs>\n";
    for (const Panel* p : {&section, &planView})
        svg += "<clipPath id=\"clip" + std::string(p == &section ? "Section" : "Plan") +
               "\"><rect x=\"" + num(p->left) + "\" y=\"" + num(p->top) + "\" width=\"" +
               num(p->size) + "\" height=\"" + num(p->size) + "\"/></clipPath>\n";
    svg += "</defs>\n";

    // Title and the plan's facts.
    char sub[256];
    std::snprintf(sub, sizeof sub,
                  "%zu lines, TD %.1f %s MD / %.1f %s TVD; vertical section at %.2f deg; rates %s",
                  in.lines.size(), st.back().s.md, L.c_str(), st.back().s.tvd, L.c_str(),
                  plan.m_dVSAzi / kDegree, in.units.rate());
    svg += "<text x=\"" + num(kLeftPanel - 60) +
           "\" y=\"34\" font-size=\"20\" font-weight=\"bold\">" + esc(in.title) + "</text>\n";
    svg += "<text x=\"" + num(kLeftPanel - 60) + "\" y=\"56\" font-size=\"12\" fill=\"#444\">" +
           esc(sub) + "</text>\n";
    if (sol.error != 0)
        svg += "<text x=\"" + num(kLeftPanel - 60) + "\" y=\"76\" font-size=\"12\" fill=\"" +
               kFailColour + "\" font-weight=\"bold\">Not solved: " + esc(sol.message) +
               "</text>\n";

    char vsTitle[96];
    std::snprintf(vsTitle, sizeof vsTitle, "Vertical section (%s) at %.1f deg", L.c_str(),
                  plan.m_dVSAzi / kDegree);
    axes(svg, section, "Vertical section", vsTitle, "TVD (" + L + ")");
    axes(svg, planView, "Plan view", "East (" + L + ")", "North (" + L + ")");

    // The path, the stations, the tie-on.
    std::set<int> families;
    for (const Panel* p : {&section, &planView}) {
        const bool isSection = p == &section;
        svg +=
            std::string("<g clip-path=\"url(#clip") + (isSection ? "Section" : "Plan") + ")\">\n";
        for (const Part& part : parts) {
            svg += polyline(*p, isSection ? part.section : part.planView, familyColour(part.family),
                            "");
            families.insert(legendFamily(part.family));
        }
        for (std::size_t k = 1; k < st.size(); ++k) {
            const SStation& s = st[k].s;
            const Pt q = isSection ? Pt{vsOf(s), s.tvd} : Pt{s.ew, s.ns};
            svg += "<circle cx=\"" + num(p->sx(q.x)) + "\" cy=\"" + num(p->sy(q.y)) +
                   "\" r=\"2.6\" fill=\"#fff\" stroke=\"#222\" stroke-width=\"1\"/>\n";
        }
        const Pt t = isSection ? Pt{vsOf(tie), tie.tvd} : Pt{tie.ew, tie.ns};
        svg += "<rect x=\"" + num(p->sx(t.x) - 4.5) + "\" y=\"" + num(p->sy(t.y) - 4.5) +
               "\" width=\"9\" height=\"9\" fill=\"#000\"/>\n";

        // Targets: a ringed cross and the name, the name moved aside where it would run out of the
        // panel or onto a name already written.
        std::vector<Pt> labels;
        auto place = [&labels, p](double& lx, double& ly, double w, double x) {
            if (lx + w > p->left + p->size - 2) lx = x - 11 - w;
            for (bool moved = true; moved;) {
                moved = false;
                for (const Pt& o : labels) {
                    if (std::fabs(o.y - ly) < 13.0 && std::fabs(o.x - lx) < w + 4.0) {
                        ly += 14.0;
                        moved = true;
                    }
                }
            }
            labels.push_back({lx, ly});
        };
        for (const STarget& tg : in.targets) {
            const Pt q = isSection ? Pt{plan.GetVS(tg.ns, tg.ew), tg.tvd} : Pt{tg.ew, tg.ns};
            const double x = p->sx(q.x), y = p->sy(q.y);
            svg += "<g stroke=\"" + std::string(kTargetColour) + "\" stroke-width=\"1.6\">" +
                   "<circle cx=\"" + num(x) + "\" cy=\"" + num(y) + "\" r=\"7\" fill=\"none\"/>" +
                   "<line x1=\"" + num(x - 10) + "\" y1=\"" + num(y) + "\" x2=\"" + num(x + 10) +
                   "\" y2=\"" + num(y) + "\"/><line x1=\"" + num(x) + "\" y1=\"" + num(y - 10) +
                   "\" x2=\"" + num(x) + "\" y2=\"" + num(y + 10) + "\"/></g>\n";
            const std::string name = narrow(tg.name);
            const double w = textWidth(name);
            double lx = x + 11, ly = y - 8;
            place(lx, ly, w, x);
            svg += "<text x=\"" + num(lx) + "\" y=\"" + num(ly) + "\" fill=\"" + kTargetColour +
                   "\" font-weight=\"bold\" stroke=\"#fff\" stroke-width=\"3\"" +
                   " paint-order=\"stroke\">" + esc(name) + "</text>\n";
        }

        // The failing line: a cross where it starts, a dashed line to its target if it has one.
        if (sol.error != 0) {
            const SStation& last = st.back().s;
            const Pt q = isSection ? Pt{vsOf(last), last.tvd} : Pt{last.ew, last.ns};
            const double x = p->sx(q.x), y = p->sy(q.y);
            const LineInput& failed = in.lines[static_cast<std::size_t>(sol.failedLine)];
            for (const STarget& tg : in.targets) {
                if (narrow(tg.name) != failed.target) continue;
                const Pt r = isSection ? Pt{plan.GetVS(tg.ns, tg.ew), tg.tvd} : Pt{tg.ew, tg.ns};
                svg += "<line x1=\"" + num(x) + "\" y1=\"" + num(y) + "\" x2=\"" + num(p->sx(r.x)) +
                       "\" y2=\"" + num(p->sy(r.y)) + "\" stroke=\"" + kFailColour +
                       "\" stroke-width=\"2\" stroke-dasharray=\"6 4\"/>\n";
            }
            svg += "<g stroke=\"" + std::string(kFailColour) + "\" stroke-width=\"3\">" +
                   "<line x1=\"" + num(x - 8) + "\" y1=\"" + num(y - 8) + "\" x2=\"" + num(x + 8) +
                   "\" y2=\"" + num(y + 8) + "\"/><line x1=\"" + num(x - 8) + "\" y1=\"" +
                   num(y + 8) + "\" x2=\"" + num(x + 8) + "\" y2=\"" + num(y - 8) + "\"/></g>\n";
            const std::string label =
                "Line " + std::to_string(st.size() + 1) + " failed: " + failed.method->name();
            double lx = x + 12, ly = y + 16;
            place(lx, ly, textWidth(label), x);
            svg += "<text x=\"" + num(lx) + "\" y=\"" + num(ly) + "\" fill=\"" + kFailColour +
                   "\" font-weight=\"bold\" stroke=\"#fff\" stroke-width=\"3\" "
                   "paint-order=\"stroke\">" +
                   esc(label) + "</text>\n";
        }
        svg += "</g>\n";
    }

    // Legend: the families drawn, the tie-on, stations, targets and a failing line.
    double x = kLeftPanel - 60;
    const double y = kPanelTop + kPanelSize + 75;
    auto item = [&svg, &x, y](const std::string& symbol, const std::string& label) {
        svg += symbol + "<text x=\"" + num(x + 30) + "\" y=\"" + num(y + 4) + "\">" + esc(label) +
               "</text>\n";
        x += 40 + 6.4 * static_cast<double>(label.size());
    };
    svg += "<g class=\"legend\">\n";
    item("<rect x=\"" + num(x + 6) + "\" y=\"" + num(y - 4.5) + "\" width=\"9\" height=\"9\"/>",
         "Tie-on");
    for (int f : families)
        item("<line x1=\"" + num(x) + "\" y1=\"" + num(y) + "\" x2=\"" + num(x + 24) + "\" y2=\"" +
                 num(y) + "\" stroke=\"" + familyColour(f) + "\" stroke-width=\"3\"/>",
             legendLabel(f));
    item("<circle cx=\"" + num(x + 12) + "\" cy=\"" + num(y) +
             "\" r=\"2.6\" fill=\"#fff\" stroke=\"#222\"/>",
         "Station");
    if (!in.targets.empty())
        item("<circle cx=\"" + num(x + 12) + "\" cy=\"" + num(y) +
                 "\" r=\"6\" fill=\"none\" stroke=\"" + kTargetColour + "\" stroke-width=\"1.6\"/>",
             "Target");
    if (sol.error != 0)
        item("<text x=\"" + num(x + 5) + "\" y=\"" + num(y + 6) + "\" fill=\"" + kFailColour +
                 "\" font-size=\"18\" font-weight=\"bold\">x</text>",
             "Failing line");
    svg += "</g>\n</svg>\n";
    return svg;
}

}  // namespace orrin_tool
