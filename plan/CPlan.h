// CPlan: one well plan and the whole planning engine.
//
// A plan is an ordered array of stations. Station 0 is the tie-on station; every later station ends a
// planned line or one stored part of a line, and carries the method code that says how the line is
// specified. The client fills the public transfer fields and calls PutData(line); the plan stores the
// line and re-solves itself; GetData(line) fills the transfer fields with the solved line, and
// ErrorMessage() gives the text of the current error.
//
// Frame and units, for every routine of the class:
//   - directions are (east, north, down) = (sin A sin I, cos A sin I, cos I); inclination I from the
//     downward vertical, azimuth A clockwise from north; positions are (tvd, ns, ew), down positive;
//   - every angle is [rad], every dogleg severity, build and turn rate [rad/L], lengths [L] in the
//     application's own length unit. Degrees and rates per 100 or 30 units belong to the client;
//   - getdaz wraps an angle difference into (-pi, pi], deltaz an azimuth into [0, 2 pi).
//
// Failures never throw: every operation reports through m_nError (0 or a code of plan/ErrorCodes.h)
// and the bool results where a routine has one. No operation reads or writes outside its arrays.
// A plan object owns everything it uses; it is not safe for concurrent use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "plan/ErrorCodes.h"
#include "plan/OrrinExport.h"
#include "plan/Records.h"

/// Makes the library's resources reachable to a host application framework. Where there is no such
/// framework (every platform this library is built for) it does nothing.
ORRIN_API void InitOrrinDLL();

class ORRIN_API CPlan {
public:
    // ---- Error and selectors ------------------------------------------------------------------
    int m_nError = 0;      ///< error code of the last operation: 0 or a negative orrin::PlanError
    int m_nFamily = 0;     ///< method family of the line being put or read [-]
    int m_nSubMethod = 0;  ///< variant within the family [-]
    int m_bConstTF = 0;    ///< used as bool: constant-toolface variant of drop/turn lines

    // ---- Line values (transfer fields) ----------------------------------------------------------
    double m_dVS = 0.0;     ///< vertical section of the line's end [L]
    double m_dMD = 0.0;     ///< measured depth [L]
    double m_dInc = 0.0;    ///< inclination [rad]
    double m_dAzi = 0.0;    ///< azimuth [rad]
    double m_dTF = 0.0;     ///< toolface [rad]
    double m_dTVD = 0.0;    ///< true vertical depth [L]
    double m_dDLS = 0.0;    ///< dogleg severity [rad/L]
    double m_dBuild = 0.0;  ///< build rate [rad/L]
    double m_dTurn = 0.0;   ///< turn rate [rad/L]

    // ---- Two-dimensional profile ------------------------------------------------------------------
    int m_nSolveFor1 = 0;      ///< first unknown of a 2D profile: 1, 4 or 7 (see meth2d) [-]
    int m_nSolveFor2 = 0;      ///< second unknown of a 2D profile [-]
    int m_nProfileType = 0;    ///< 1 slant, 2 S-shape [-]
    double m_dBuildDLS = 0.0;  ///< signed curvature of the build arc [rad/L]
    double m_dDropDLS = 0.0;   ///< signed curvature of the drop arc [rad/L]
    double m_dLength1 = 0.0;   ///< kick-off hold; back-target tvd for a backward line [L]
    double m_dLength2 = 0.0;   ///< tangent hold; back-target north for a backward line [L]
    double m_dLength3 = 0.0;   ///< final hold; back-target east for a backward line [L]
    double m_dHoldInc = 0.0;   ///< tangent inclination [rad]
    double m_dFinalInc = 0.0;  ///< final inclination of an S-shape [rad]

    // ---- Target ---------------------------------------------------------------------------------------
    std::u16string m_strTarget;    ///< back-target name of a "BACK Target" line
    bool m_bTargetFlag = false;    ///< back-target flag
    int m_nTargetMethod = 0;       ///< variant of the target families, 1 to 8 [-]
    double m_dMethodParam1 = 0.0;  ///< first dogleg severity [rad/L]
    double m_dMethodParam2 = 0.0;  ///< second dogleg severity [rad/L]
    double m_dMethodParam3 = 0.0;  ///< a length (tangent) [L]
    double m_dMethodParam4 = 0.0;  ///< an angle [rad] or a depth [L], by method
    double m_dMethodParam5 = 0.0;  ///< a vertical depth [L]
    double m_dMethodParam6 = 0.0;  ///< a vertical depth [L]
    double m_dMethodParam7 = 0.0;  ///< build rate [rad/L]
    double m_dMethodParam8 = 0.0;  ///< turn rate [rad/L]
    STarget m_target;              ///< the target transfer record

    // ---- Cursor and range -----------------------------------------------------------------------
    int m_nFirst = 0;  ///< first stored station of the current or failing line [-]
    int m_nLast = 0;   ///< last stored station of the current or failing line [-]
    int m_nPrev = 0;   ///< station from which the current line starts: the solve cursor [-]

    // ---- Working stations -----------------------------------------------------------------------
    SStation m_stnA;                 ///< scratch, and the answer of every interpolation
    SStation m_stnPrev;              ///< copy of the station where the current line starts
    SStation m_stnC;                 ///< where the current line ends
    std::u16string m_strWalkTarget;  ///< name of the bit-walk target
    double m_dBuildRadius = 0.0;     ///< signed build radius of a 2D profile [L]
    double m_dDropRadius = 0.0;      ///< signed drop radius of a 2D profile [L]
    double m_dStartInc = 0.0;        ///< start inclination of a 2D profile [rad]
    double m_dDisplacement = 0.0;    ///< horizontal distance from the start to the target [L]
    double m_dDepthToTarget = 0.0;   ///< target tvd minus start tvd of a 2D profile [L]
    double m_dWalkTargetTVD = 0.0;   ///< real walk-target depth, kept while the aim moves [L]
    double m_dWalkTargetNS = 0.0;    ///< real walk-target north [L]
    double m_dWalkTargetEW = 0.0;    ///< real walk-target east [L]
    double m_dWalkedNS = 0.0;        ///< walked north reached at m_nWalkLine [L]
    double m_dWalkedEW = 0.0;        ///< walked east reached at m_nWalkLine [L]
    double m_dWalkedTVD = 0.0;       ///< walked depth reached at m_nWalkLine [L]
    int m_nWalkEntries = 0;          ///< walk-table entries in use [-]
    int m_nWalkStations = 0;         ///< stations written into m_walkStations [-]
    int m_nWalkLine = 0;             ///< station that carries the walk target [-]

    // ---- Transfer flags ------------------------------------------------------------------------
    // GetData sets the flags after m_bHorizontalTurn for the line it reads. The m_bGiven... flags
    // tell a client form which fields the line's method takes as input (true) and which are results
    // (false); an insert point, an empty line, marks every field as input.
    bool m_bHorizontalTurn = false;  ///< turn rates are horizontal-plane rates (dA/dMD = h / sin I)
    bool m_bLineStart = false;       ///< the line number asked for is the line's own first station
    bool m_bGivenMD = false;         ///< the method takes the measured depth as given
    bool m_bGivenInc = false;        ///< ... the end inclination
    bool m_bGivenAzi = false;        ///< ... the end azimuth
    bool m_bGivenTVD = false;        ///< ... the vertical depth (or a target that sets it)
    bool m_bGivenDLS = false;        ///< ... the dogleg severity
    bool m_bGivenTF = false;         ///< ... the toolface
    bool m_bGivenBuild = false;      ///< ... the build rate
    bool m_bGivenTurn = false;       ///< ... the turn rate
    bool m_bGivenVS = false;         ///< ... the vertical section
    bool m_bGivenTarget = false;     ///< ... a target (name and position)
    bool m_bGivenParams = false;     ///< ... profile lengths or method parameters
    bool m_bBackIncFollows = false;  ///< a backward line to inclination (-40 or -60) follows
    bool m_bLineStartCopy = false;   ///< repeats m_bLineStart
    bool m_bBackIncAziFollows = false;  ///< the backward line that follows is -60

    // ---- Arrays -----------------------------------------------------------------------------------
    std::vector<std::pair<double, double>> m_walk;  ///< walk table: (tvd [L], walk rate [rad/L])
    std::vector<SStation> m_stations;               ///< the plan; index 0 is the tie-on station
    std::vector<SStation> m_saved;                  ///< saved copy of m_stations
    std::vector<STarget> m_targets;                 ///< the targets, indexed by the client
    std::vector<SStation> m_walkStations;           ///< the walked profile of the bit-walk

    // ---- Vertical section --------------------------------------------------------------------------
    double m_dVSAzi = 0.0;    ///< azimuth of the vertical-section plane [rad]
    double m_dVSNorth = 0.0;  ///< north of the section origin [L]
    double m_dVSEast = 0.0;   ///< east of the section origin [L]

    /// The target key written into the station before a backward line: "BACKTARGET".
    static const std::u16string K_BACKTARGET;

    // ==== Plan records and storage (plan/MethodNames.cpp, plan/Storage.cpp) ====================
    CPlan();
    CPlan(const CPlan& other);
    CPlan& operator=(const CPlan& other);
    ~CPlan();

    static std::u16string GetNameFromMethod(int code);
    static bool IsTargetKeyValid(const std::u16string& key);

    void NewData(int n);
    void NewTarget(int n);
    void LoadData(int i, const SStation& s);
    void LoadTarget(int i, const STarget& t);
    void DumpData(int i, SStation& s) const;
    unsigned GetSize() const;
    void Insert(int line, bool backward);
    void Delete(int line);
    void ClearAll();
    void SaveData();
    void RestoreData();

    // ==== Putting and reading lines, errors (plan/Put.cpp, plan/Get.cpp, plan/ErrorMessage.cpp) ====
    void PutData(int line);
    int GetAddPoint() const;
    /// Turns stations whose position is known (a path loaded with LoadData: tvd, ns, ew) into a
    /// survey of "Inc Azi MD" lines (plan/Ferranti.cpp). For i = first ... last, clamped to
    /// 1 ... GetSize() - 1 and taken in order, station i becomes the circular arc from station i - 1,
    /// tangent to its direction, through station i's position (ptoang, minimum curvature): md, inc and
    /// azi of the arc's end; dls, tf, build, turn by GetDeltas(i); dl the arc's dogleg [rad]; code 30.
    /// Its position, target and flag are kept. The first arc leaves in the direction of station
    /// first - 1, each later one in the direction the arc before it arrived with.
    /// Returns the number of stations converted (0 when first > last after clamping) and sets
    /// m_nError to 0. No solve is run. Solving the converted plan gives back every position, except
    /// after a chord of MIN_CHORD (0.25 [L]) or less, which is laid straight along the direction it
    /// starts with, not through the point.
    int ferranti(int first, int last);
    void GetData(int line);
    void GetDeltas(int i);
    void GetLines(int line);
    std::u16string ErrorMessage() const;

    // ==== Angles and vectors (geometry/Angles.cpp) ===============================================
    static double getdaz(double x);
    static double deltaz(double x);
    static double tangle(double a, double b);
    static double normalize(double& x, double& y, double& z);
    static void vector(double inc, double azi, double& e, double& n, double& v);
    static double canvec(double v1, double n1, double e1, double v2, double n2, double e2,
                         double& e, double& n, double& v);

    // ==== Curvature steps and vertical section (geometry/Curvature.cpp, VerticalSection.cpp) ======
    double ptoang();
    void SetVS(double azi, double north, double east);
    double GetVS(double north, double east) const;
    double GetVSPoint(double vs, double north, double east, double azi, double& out1,
                      double& out2) const;

    // ==== Interpolation at depth (interp/DepthInterp.cpp) ==========================================
    // Each routine answers for one line, from m_stnPrev (its start) to m_stnC (its end), in m_stnA;
    // PlanPointAt below loads those two from the plan and picks the routine.
    void mcmdint(double md, bool bConstTF);
    void mcvdint(double tvd);
    void rcmdint(double md);
    void rcvdint(double tvd);
    void btmdint(double md, bool bLineRates);
    void ctmdint(double md, bool bLineRates);

    // ==== Interpolation at angles and planes (interp/AngleInterp.cpp) =============================
    bool rcincint(double inc, bool bMinCur);
    bool rcaziint(double azi, bool bMinCur);
    double scan_approx(int mode);
    SIntercept scan_exact(int mode);
    void mcnsint(double ns);
    void mcewint(double ew);

    // ==== Points of the whole plan (interp/PlanPoint.cpp) ==========================================
    /// The quantity PlanPointAt looks for.
    enum PlanQuantity : int {
        PLAN_MD = 0,     ///< measured depth [L]
        PLAN_TVD = 1,    ///< true vertical depth [L]
        PLAN_INC = 2,    ///< inclination [rad]
        PLAN_AZI = 3,    ///< azimuth [rad]
        PLAN_NORTH = 4,  ///< north coordinate [L]
        PLAN_EAST = 5,   ///< east coordinate [L]
    };
    /// The point of the solved plan where `quantity` (a PlanQuantity) takes `value`; true when one
    /// is found, with the point in m_stnA (md, inc, azi, tvd, ns, ew, dls; tf and the rates as the
    /// routine used sets them).
    ///
    /// The plan is searched from the top, one stored part at a time (station k-1 to station k, so a
    /// profile or target line is searched arc by arc and hold by hold), and the first part that
    /// holds the value answers; m_stnPrev and m_stnC are left loaded with that part. The model of a
    /// part is the code of its line's first station (continuation stations carry code 1):
    ///   - PLAN_MD: build/turn lines (105, 115, 125, 135) by btmdint and constant-toolface lines (51,
    ///     101, 111, 121, 131) by ctmdint, each with the line's own rates; every other line (arcs
    ///     and holds) by minimum curvature, mcmdint. A part holds a depth between its ends' depths.
    ///     Less than 1.0 past the start of a constant-toolface line, where its chain of 1.0 arcs has
    ///     not begun, the point is that chain's first arc (dttomd with the line's dls and tf).
    ///     Beyond the plan's last measured depth the last station is carried straight on along its
    ///     direction (mcmdint on the last part).
    ///   - PLAN_TVD: mcvdint, for every line model; a part holds a depth between its ends' depths.
    ///   - PLAN_INC, PLAN_AZI: rcincint, rcaziint with bMinCur (minimum-curvature positions); a part
    ///     holds the value when the routine says so (rcincint grants 0.0001 [rad] beyond its ends).
    ///   - PLAN_NORTH, PLAN_EAST: mcnsint, mcewint; a part holds a coordinate between its ends'.
    /// So only a measured depth follows a build/turn or constant-toolface line's own curve; the
    /// other quantities are found on the minimum-curvature arc between its ends' directions.
    ///
    /// False when no part holds the value (before the tie-on depth, a plan with no lines, an
    /// unknown quantity): m_nError = -17 (ERR_TVD_UNREACHABLE), or the last error a routine set
    /// on a part it was asked about (mcvdint's -17 on a horizontal chord). On success m_nError = 0.
    /// No stored station changes, and the solve cursor and range (m_nPrev, m_nFirst, m_nLast) are
    /// kept, though the constant-toolface routines move them while they work.
    bool PlanPointAt(int quantity, double value);
    /// Many points of the solved plan at once: for each of `count` values, what PlanPointAt finds,
    /// into out[i] (the m_stnA of that search), with found[i] (when `found` is not null) telling
    /// whether it was found. For md, tvd, north and east the part to search from is found by
    /// bisection over the plan's running range of station values, so each point costs the
    /// logarithm of the plan's length instead of a walk from the top; the answers are those of
    /// PlanPointAt. Returns the number of values found; null arrays find nothing.
    std::size_t PlanPointsAt(int quantity, std::size_t count, const double* values, SStation* out,
                             bool* found = nullptr);

    // ==== Bit walk (interp/Walk.cpp) ===============================================================
    void CalcWalk();
    void RestoreWalk();
    /// Fills the walk table: each entry is (vertical depth [L], walk rate [rad/L]), the rate holding
    /// below that depth. Stores the entries sorted by increasing depth (stably; an entry whose depth
    /// is NaN goes last) and puts all of them in use (m_nWalkEntries). A client may instead fill
    /// m_walk and m_nWalkEntries itself, in increasing depth.
    void SetWalkTable(const std::vector<std::pair<double, double>>& entries);

    // ==== One-dimensional lines (methods1d/Method1D.cpp, BuildTurn.cpp, DropTurn.cpp, Ouija.cpp) ==
    void meth1d();
    void bttomd(double md, double build, double turn);
    void bttotvd(double tvd, double build, double turn);
    void dttomd(double md, double dls, double tf);
    void dttotvd(double tvd, double dls, double tf);
    void cttomd(double md, double dls, double tf);
    void cttotvd(double tvd, double dls, double tf);
    int OuijaCalcs(double md, bool incGiven, double inc, bool aziGiven, double azi, bool dlsGiven,
                   double dls, bool tfGiven, double tf, SStation plane);

    /// Solves a measured survey of any length exactly as the plan solves "Inc Azi MD" lines.
    /// From `tieOn`, station i (md[i], inc[i], azi[i]: measured depth [L], inclination and
    /// azimuth [rad]) is solved from station i - 1 by the same line step as a plan line of code 30
    /// and written whole into out[i]: every field as the plan would hold it after putting the same
    /// stations with PutData (the other transfer fields at 0) and solving them, to the last bit. Time
    /// and memory are linear in `count`; no plan is built. The plain turn model is used.
    /// A survey is never read as course lengths: a measured depth not beyond the one before it (or
    /// the tie-on's) stops the survey there with -10, the stations before it solved. Otherwise the
    /// result is 0, or the error the plan would report for the first station that fails (the
    /// stations before it solved). Null arrays with a non-zero count give -4 and write nothing.
    /// (plan/Survey.cpp)
    static int SolveSurvey(const SStation& tieOn, std::size_t count, const double* md,
                           const double* inc, const double* azi, SStation* out);

    // ==== Target methods (targets/CurveToTarget.cpp, targets/OptimumAlign.cpp) =======================
    double stagg(double tvd, double ns, double ew);
    void meth_dtsch();
    /// "HZ Landing" (1950) of the line after m_nPrev, as meth3d prepares it: meth_horlanc with the
    /// line's m_dMethodParam1 and m_dMethodParam4, then its two stations written.
    void meth_horlan();
    /// "OPT AL CUR" (variant 0), "OPT AL CD1" (1) or "OPT AL CD2" (2) of the line after m_nPrev, as
    /// meth3d prepares it (start station with its unit direction, target, settings loaded).
    void meth_optcc(int variant);
    /// "OPT AL DLS" (2910) of the line after m_nPrev, as meth3d prepares it.
    void meth_optdls();
    /// The horizontal landing without storing it: from m_stnPrev (its unit direction set here) two
    /// arcs of dogleg severity |dls| [rad/L] that land on the horizontal line through m_target at
    /// azimuth `azi` [rad], arriving along it; the shortest such path, landing either way along the
    /// line. The end of the first arc goes into m_stnA, the landing point into m_stnC (tvd that of
    /// the target, inc pi/2, azi `azi`; md counted from m_stnPrev.md; rates as stored lines have
    /// them). Sets and returns m_nError: 0; -1 dls zero or no landing; -12 the start already on the
    /// line heading along it. No stored station or cursor changes. (targets/OptimumAlign.cpp)
    int meth_horlanc(double dls, double azi);

private:
    template <typename Tag>
    friend struct PlanAccess;  // white-box tests reach private routines through this

    // ==== Plan records and storage (plan/MethodNames.cpp, plan/Storage.cpp) ====================
    static int gettyp(int code);
    static void SetZero(SStation& s);
    void resize();
    void addone(int i);
    void delone(int i);

    // ==== Solving (plan/Solve.cpp, plan/Backward.cpp) ==============================================
    void solval();
    bool finiteStations(int first, int last) const;  ///< no infinity or NaN in their solved values
    void DoBackwards(unsigned& i);
    void salvo(int code);  ///< one backward line in the reversed frame (see plan/Backward.cpp)

    // ==== Putting and reading lines (plan/Put.cpp, plan/Get.cpp) ===================================
    void putm1d(int station);
    void putm2d(int variant);
    void putm3d(short code);
    void putBackward(int line);      ///< stores a backward line (family 150) at `line`
    void setGivenFlags(short code);  ///< the m_bGiven... flags of a line of this code
    void settar(int station, const STarget& target);
    void readLine(int line);  ///< GetData without its guard of the cursor (see GetData)
    void gettar(int station, int code);
    void getm2d(int previous, int line);
    bool hasStation(int i) const;  ///< i indexes an existing station
    short codeAt(int i) const;     ///< method code of station i, 0 outside the array

    // ==== Angles and dogleg conversions (geometry/Angles.cpp) =====================================
    double tarvec(double n1, double e1, double inc, double n2, double e2, double& e, double& n,
                  double& v);
    double lasvec(double tvd, double ns, double ew);
    double getfo(double inc1, double azi1, double inc2, double azi2, double& dl, double& daz);
    double hdls2daz(double h, double len, double inc0, double build) const;
    double daz2hdls(double daz, double len, double inc0, double build) const;
    double dazhdls2md(double daz, double h, double inc0, double build) const;

    // ==== Curvature steps (geometry/Curvature.cpp) ===================================================
    void mincur();
    void radcur();
    double backcal();

    // ==== Single-line solvers (methods1d/Solvers.cpp) ==============================================
    void solve1();
    void solve2();
    void solve3();
    void solve4();
    void solve6();
    void solve8(int side);
    void solve9(int side);
    void solve10();
    void solve11();
    void solve12();
    void solve13();

    // ==== One-dimensional lines (methods1d/Method1D.cpp, BuildTurn.cpp, DropTurn.cpp) ===========
    bool loadLine();  ///< the line after m_nPrev into m_stnPrev/m_stnC, with its course length
    bool firstFamilyStep(int line);  ///< meth1d's solve of m_stnC from m_stnPrev (see meth1d)
    void meth_optdl1();
    bool arcStepLays() const;  ///< meth_optdl1 lays an arc (the course is over MIN_ARC_COURSE)
    void build_turn();
    void meth1b();
    void constant_toolface();
    void meth1c();
    void walkToAzimuth(double aim, double K, double TF);  ///< the arc walk of "CT4 Azm."
    template <typename Judge>
    void walkArcs(double dls, double tf, Judge judge);  ///< a constant-toolface walk of 1.0 arcs

    // ==== Interpolation at angles (interp/AngleInterp.cpp) ===========================================
    void pointAtAngles(bool bMinCur);  ///< the position step shared by rcincint and rcaziint

    // ==== Interpolation (interp/DepthInterp.cpp) ==================================================
    bool curvePointAngles(double md, bool bLineRates, double& daz);  ///< see btmdint, ctmdint
    short loadPart(int k);               ///< part k of the plan into m_stnPrev/m_stnC
    bool partAtDepth(int k, double md);  ///< the point of part k at a measured depth
    bool pointFromPart(int quantity, double value, int from, int n);  ///< see PlanPointAt

    // ==== Bit walk (interp/Walk.cpp) ===============================================================
    void wlkpro();

    // ==== Two-dimensional profiles (targets/Profile2D.cpp) =========================================
    void meth2d();
    void angus();
    void serr(double* p, double& dv, double& dh);

    // ==== Three-dimensional dispatch and curve-to-target (targets/Dispatch3D.cpp, CurveToTarget.cpp)
    void meth3d();
    double stagj(double tvd, double ns, double ew, double k, int mode);
    double manic(double e, double n, double v, double k);
    void tagStation(int k, short code, bool aimsAtTarget);  ///< code, target and flag of a station
    void meth_dtoli();
    void meth_dtctt();
    void meth_dtctmd();
    void meth_dtshc();

    // ==== Build/turn and online target methods (targets/BuildTurnTargets.cpp, OnlineTargets.cpp,
    // TargetParts.cpp). A part is one stored station of a target line, computed from the station
    // before it; the routines compute every part first and store them only when the line is solved.
    void meth_btctt();
    void meth_btctmd();
    void meth_btoli();
    void meth_dtolt();
    void meth_btolt();
    void meth_btsch();
    void meth_dtholi();
    double maniac(double T, double& e, double& n, double& v);  ///< the inverse of manic
    int onlineArc(double tvd, double& e, double& n, double& v, double& K);  ///< the arc of 1930
    SStation btpart(const SStation& from, double B, double T, double L);    ///< a build/turn curve
    SStation arcpart(const SStation& from, double e, double n, double v, double K);  ///< an arc
    static SStation holdpart(const SStation& from, double H);            ///< a straight hold
    void storePart(int k, const SStation& part, short code, bool last);  ///< writes one part
    void storeLine(short code, std::initializer_list<SStation> parts);   ///< writes a solved line

    // ==== Optimum align and horizontal landing (targets/OptimumAlign.cpp) ===========================
    void meth_opttan();
    void meth_opttvd();
    /// Solves (and, when `store`, writes) the line of `code`: 1940, 1960, 1970, 2910, 2940, 2950 with
    /// their settings from m_dMethodParamN, 1950 with severity `dls` and landing azimuth `azi`.
    int optalign(int code, double dls, double azi, bool store);

    // ---- Solver bookkeeping ------------------------------------------------------------------------
    /// The station whose stored record a failing line method corrected to a value that would work
    /// (a build rate, a turn sign, an inclination), or -1. The solver puts the plan back after a
    /// failing line but keeps that one corrected record, so that reading the failing line back shows
    /// the suggestion; every solved station is restored exactly.
    int m_nSuggested = -1;
    /// Set when a constant-toolface walk stopped at its step bound (the line then fails with -17).
    bool m_bWalkBounded = false;

    /// The constant-toolface walks laid from one start: the start (the position and
    /// direction of m_stnPrev), the dogleg severity, toolface and curvature model; the last whole walk
    /// and what it wrote; and every WALK_MARK_EVERY-th arc of full length laid from that start. A line
    /// that walks to find its end and then lays the curve again to that end ("CT1 MD", "CT2 TVD",
    /// "CT4 Azm.") takes the second walk whole from here or goes on from the last marked arc before
    /// its end, as does a point of a line (a walk to a depth within it): they would lay the very
    /// same arcs.
    /// The fields a walk writes into m_stnC are kept as md, inc, azi, tvd, ns, ew, dls, tf, dl,
    /// build, turn.
    struct SWalkMemo {
        bool valid = false;         ///< a start has been recorded
        bool hasEnd = false;        ///< a whole walk from it has been recorded
        std::uint64_t key[9] = {};  ///< bits of md, inc, azi, tvd, ns, ew; dls, tf; the model
        std::uint64_t endKey = 0;   ///< bits of the end depth of the last whole walk
        bool laid = false;          ///< that walk laid an arc (else it kept m_stnC as it was)
        double end[11] = {};        ///< what that walk wrote
        int error = 0;              ///< m_nError after it
        bool bounded = false;       ///< it stopped at its step bound
        std::vector<double> marks;  ///< per marked arc: what it wrote, then m_nError after it
    };
    /// Starts whose walks are kept: the constant-toolface lines of a plan re-solved after a line is
    /// added or changed further on start where they did before and lay nothing again.
    static constexpr unsigned WALK_STARTS = 16;
    SWalkMemo m_walkMemos[WALK_STARTS];
    unsigned m_walkAt = 0;                                      ///< the memo of the walk under way
    unsigned m_walkNext = 0;                                    ///< the memo a new start takes
    bool walkMemoFor(const SStation& s0, double K, double TF);  ///< see methods1d/DropTurn.cpp
    void markArc(long arc);                                     ///< see methods1d/DropTurn.cpp

    // ---- Sine and cosine memo (geometry/TrigMemo.h) ----------------------------------------------
    /// sin x and cos x [-] of an angle x [rad]: the very values std::sin and std::cos give, taken
    /// from the memo when the same x (to the bit) was asked for lately. One line's solvers take the
    /// same few angles many times over (both end inclinations in solve1, solve2 and the arc step),
    /// and a constant-toolface walk the same dogleg and toolface in every arc.
    inline void sincosOf(double x, double& s, double& c);  ///< (geometry/TrigMemo.h)
    /// The unit direction (ue, un, uv) of station s from its inc and azi, as vector gives it.
    inline void unitOf(SStation& s);
    struct STrigSlot {
        std::uint64_t key = 0;  ///< bit pattern of the slot's angle (+0.0 to start)
        double sin = 0.0;       ///< its sine [-]
        double cos = 1.0;       ///< its cosine [-]
    };
    /// Sets of the memo, one chosen by an angle's bits; each holds two angles, the one used last
    /// first.
    static constexpr unsigned TRIG_SETS = 16;
    STrigSlot m_trig[TRIG_SETS][2];
    /// tan x of an angle x [rad], from the memo when x is the angle asked last: the arcs of a
    /// constant-toolface chain share one dogleg.
    inline double tanOf(double x);
    std::uint64_t m_tanKey = 0;  ///< bit pattern of the angle asked last (+0.0 to start)
    double m_tanValue = 0.0;     ///< its tangent [-]
};
