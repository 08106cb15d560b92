// The three-dimensional target methods: one entry that prepares what they share and hands the line
// to the routine of its code.
#include "plan/CPlan.h"

using namespace orrin;

// Solves the target method whose first station follows m_nPrev.
//   1. m_nError is cleared, and readLine(-1) (GetData without its cursor guard) loads the start station into m_stnPrev, the line's
//      target into m_target and the line's working fields.
//   2. The start direction (east, north, down) = (sin A sin I, cos A sin I, cos I) of m_stnPrev is
//      stored in its ue, un, uv: every target method reads its start direction there.
//   3. The code of station m_nPrev + 1 selects the routine, which sets m_nError and advances m_nPrev.
//      A code without a routine here does nothing: no error, and the cursor stays where it is (the
//      solver's limit on lines solved in one pass then ends the solve).
// The three optimum-align codes of two stations share one routine, told apart by its argument:
// 1940 gives 0, 1960 gives 1, 1970 gives 2.
void CPlan::meth3d() {
    m_nError = ERR_NONE;
    readLine(-1);
    vector(m_stnPrev.inc, m_stnPrev.azi, m_stnPrev.ue, m_stnPrev.un, m_stnPrev.uv);

    const int code = codeAt(m_nPrev + 1);
    switch (code) {
    case 910: meth_dtoli(); break;
    case 920: meth_dtctt(); break;
    case 925: meth_btctt(); break;
    case 930: meth_dtctmd(); break;
    case 935: meth_btctmd(); break;
    case 1910: meth_dtsch(); break;
    case 1915: meth_btoli(); break;
    case 1920: meth_dtshc(); break;
    case 1930: meth_dtolt(); break;
    case 1935: meth_btolt(); break;
    case 1940: meth_optcc(0); break;
    case 1950: meth_horlan(); break;
    case 1960: meth_optcc(1); break;
    case 1970: meth_optcc(2); break;
    case 2910: meth_optdls(); break;
    case 2925: meth_btsch(); break;
    case 2930: meth_dtholi(); break;
    case 2940: meth_opttan(); break;
    case 2950: meth_opttvd(); break;
    default: break;
    }
}
