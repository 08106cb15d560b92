// The plan's error codes. m_nError holds 0 or one of these; ErrorMessage turns it into text.
#pragma once

namespace orrin {

enum PlanError : int {
    ERR_NONE = 0,               ///< "No error"
    ERR_BUILD_TURN = -1,        ///< an arc cannot turn fast enough at its dogleg severity
    ERR_BUILD_TURN2 = -2,       ///< the second arc (drop) cannot turn fast enough
    ERR_NOT_LINED_UP = -3,      ///< inclined start not pointing at the target of a 2D profile
    ERR_UNKNOWN_SOLUTION = -4,  ///< no convergence, too many lines, or a method not built
    ERR_DELETE_TIE = -5,        ///< Delete(0): the tie line cannot be deleted
    ERR_INSERT_TIE = -6,        ///< Insert(0) or an insert point inside the part to be solved
    ERR_TVD_HORIZONTAL = -7,    ///< a vertical depth cannot be reached along a horizontal course
    ERR_TF_AZI = -8,            ///< toolface and wanted azimuth do not line up
    ERR_KICKOFF_OVERLAP = -9,   ///< kick-off hold of a profile comes out negative
    ERR_TANGENT_OVERLAP = -10,  ///< tangent negative, measured depth backwards, plane behind
    ERR_FINAL_OVERLAP = -11,    ///< final hold of an S-shape comes out negative
    ERR_IN_LINE = -12,          ///< target straight ahead, below, or level with the start
    ERR_REDUCE_TANGENT = -13,   ///< solution problem: reduce the tangent length
    ERR_INCREASE_INC = -14,     ///< solution problem: increase the tangent inclination
    ERR_DECREASE_INC = -15,     ///< solution problem: decrease the tangent inclination
    ERR_NO_TARGET = -16,        ///< no target has been given for the line
    ERR_TVD_UNREACHABLE = -17,  ///< a vertical depth cannot be reached (decrease build rate)
    ERR_BUILD_SIGN = -18,       ///< the build rate has the wrong value or sign, or a zero course
    ERR_TURN_SIGN = -19,        ///< the turn rate has the wrong sign to reach the azimuth
    ERR_TVD_SHORT = -20,        ///< a vertical depth cannot be reached (increase build rate)
};

}  // namespace orrin
