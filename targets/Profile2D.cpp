// Two-dimensional slant and S-shape profiles.
#include "plan/CPlan.h"

// Solves the 2D profile after station m_nPrev. Not built yet: the line is left as it is.
void CPlan::meth2d() {}
