// Start-up of the library.
#include "plan/CPlan.h"

// A host application framework would be told here where the library's resources live. This library
// carries its string table in its own code and needs no registration, so start-up has nothing to do.
void InitOrrinDLL() {}
