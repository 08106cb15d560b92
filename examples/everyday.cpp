// The everyday request: a tie-on station and one surveyed station put as an "Inc Azi MD" line.
//
// The library works in radians and in the application's length unit; this program enters degrees
// and prints degrees, and its length unit is the foot.
#include <cmath>
#include <cstdio>
#include <string>

#include "plan/CPlan.h"

namespace {
constexpr double kDegree = 3.141592653589793 / 180.0;
std::string narrow(const std::u16string& s) {
    return std::string(s.begin(), s.end());
}
}  // namespace

int main() {
    InitOrrinDLL();
    CPlan plan;
    plan.NewData(10);

    SStation tie;  // the tie-on: 1000 ft down a vertical hole
    tie.md = 1000.0;
    tie.tvd = 1000.0;
    tie.method = 2;  // "Tie Line"
    plan.LoadData(0, tie);

    plan.m_nFamily = 90;    // inclination/azimuth lines
    plan.m_nSubMethod = 1;  // "Inc Azi MD"
    plan.m_dMD = 1300.0;
    plan.m_dInc = 12.0 * kDegree;
    plan.m_dAzi = 45.0 * kDegree;
    plan.PutData(-1);  // append, and solve the plan

    plan.GetData(1);
    std::printf("%s\n", narrow(plan.ErrorMessage()).c_str());
    SStation end;
    plan.DumpData(1, end);
    std::printf(
        "line 1 \"%s\": md %.2f  inc %.2f  azi %.2f  tvd %.3f  north %.3f  east %.3f  "
        "dls %.3f deg/100ft\n",
        narrow(CPlan::GetNameFromMethod(end.method)).c_str(), plan.m_dMD, plan.m_dInc / kDegree,
        plan.m_dAzi / kDegree, plan.m_dTVD, end.ns, end.ew, plan.m_dDLS / kDegree * 100.0);
    // A 12 degree arc over 300 ft: the chord's factor is (2/dl) tan(dl/2).
    return plan.m_nError == 0 && std::fabs(plan.m_dTVD - 1297.8116) < 0.0001 ? 0 : 1;
}
