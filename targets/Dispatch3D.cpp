// The three-dimensional target methods.
#include "plan/CPlan.h"

// Solves the target method after station m_nPrev. Not built yet: the line is left as it is.
void CPlan::meth3d() {}
