// The library's method table: every method code with its display name.
#include "plan/CPlan.h"

#include <cstdio>
#include <string>

namespace {
std::string narrow(const std::u16string& s) { return std::string(s.begin(), s.end()); }
}  // namespace

int main() {
    InitOrrinDLL();
    const int codes[] = {2,   10,  20,  30,  40,  50,  51,  60,   80,   100,  101,  105,  110,
                         111, 115, 120, 121, 125, 130, 131, 135,  140,  150,  160,  180,  -10,
                         -20, -30, -40, -50, -60, 910, 920, 925,  930,  935,  1910, 1915, 1920,
                         1930, 1935, 1940, 1950, 1960, 1970, 2910, 2925, 2930, 2940, 2950};
    for (int code : codes) std::printf("%6d  %s\n", code, narrow(CPlan::GetNameFromMethod(code)).c_str());
    return 0;
}
