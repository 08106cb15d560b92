// Target methods that the three-dimensional dispatch reaches but that are not built yet: the
// build/turn-to-target methods and the online drop/turn methods to a depth or an inclination.
//
// Each one reports -4 (ERR_UNKNOWN_SOLUTION) and writes nothing, so that the solver puts the plan
// back and names the line: a client can never take such a line for a solved one. When a method is
// built it moves out of this file and must meet the contract of every target method: start from
// m_stnPrev (its unit direction already stored by meth3d), aim at m_target, read its settings from
// m_dMethodParam1 ... 8, write exactly the line's stations (the first with the line's code, the
// others code 1, the target's name and flag on the last only) and advance m_nPrev past them.
#include "plan/CPlan.h"

using namespace orrin;

void CPlan::meth_btctt() {
    m_nError = ERR_UNKNOWN_SOLUTION;
}
void CPlan::meth_btctmd() {
    m_nError = ERR_UNKNOWN_SOLUTION;
}
void CPlan::meth_btoli() {
    m_nError = ERR_UNKNOWN_SOLUTION;
}
void CPlan::meth_dtolt() {
    m_nError = ERR_UNKNOWN_SOLUTION;
}
void CPlan::meth_btolt() {
    m_nError = ERR_UNKNOWN_SOLUTION;
}
void CPlan::meth_btsch() {
    m_nError = ERR_UNKNOWN_SOLUTION;
}
void CPlan::meth_dtholi() {
    m_nError = ERR_UNKNOWN_SOLUTION;
}
