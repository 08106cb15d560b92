// A client of the installed library: a plan object, a method name, an error text and a variation
// area.
#include "geometry/CVary.h"
#include "plan/CPlan.h"

#include <cstdio>

int main() {
    InitOrrinDLL();
    CPlan plan;
    plan.NewData(5);
    if (plan.GetSize() != 1) return 1;
    if (CPlan::GetNameFromMethod(30) != u"Inc Azi MD") return 2;
    if (plan.ErrorMessage() != u"No error") return 3;
    CVary vary;
    vary.m_dEnd = 100.0;
    vary.calc_departure(0.0, 1.0, 0.0);
    CVary copy;
    copy = vary;
    if (!(copy.m_dDeparture > 0.0)) return 4;
    std::puts("consumer ok");
    return 0;
}
