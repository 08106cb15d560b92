// A client of the installed library: a plan object, a method name and an error text.
#include "plan/CPlan.h"

#include <cstdio>

int main() {
    InitOrrinDLL();
    CPlan plan;
    plan.NewData(5);
    if (plan.GetSize() != 1) return 1;
    if (CPlan::GetNameFromMethod(30) != u"Inc Azi MD") return 2;
    if (plan.ErrorMessage() != u"No error") return 3;
    std::puts("consumer ok");
    return 0;
}
