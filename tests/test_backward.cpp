// Backward lines, the settings record of target lines, and positions turned into a survey.
//
// The independent construction: a line arriving at T with direction t_e, curvature K and arrival
// toolface TF lies on the circle of radius R = 1/K whose curvature vector at T is
// kappa = cos TF h + sin TF r (h the high side, r the right side of t_e). Turned back by the dogleg
// DL it starts at P = T - R sin DL t_e + R (1 - cos DL) kappa heading cos DL t_e - sin DL kappa.
// The dogleg each code asks for is found here by a scan and bisection of that circle.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "plan/CPlan.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDeg = kPi / 180.0;
constexpr double TOL_POS = 1e-6;  ///< positions and depths [L]
constexpr double TOL_ANG = 1e-8;  ///< angles and unit-vector components [rad]

struct V {
    double e, n, v;
    V operator+(V b) const { return {e + b.e, n + b.n, v + b.v}; }
    V operator-(V b) const { return {e - b.e, n - b.n, v - b.v}; }
    friend V operator*(double k, V a) { return {k * a.e, k * a.n, k * a.v}; }
    friend double dot(V a, V b) { return a.e * b.e + a.n * b.n + a.v * b.v; }
};
V dir(double inc, double azi) {
    return {std::sin(inc) * std::sin(azi), std::sin(inc) * std::cos(azi), std::cos(inc)};
}
/// The high side and the right side of the direction (inc, azi).
V high(double inc, double azi) {
    return dir(inc + kPi / 2, azi);
}
V right(double azi) {
    return dir(kPi / 2, azi + kPi / 2);
}
void expectNear(V got, V want, double tol, const char* what) {
    EXPECT_NEAR(got.e, want.e, tol) << what << " east";
    EXPECT_NEAR(got.n, want.n, tol) << what << " north";
    EXPECT_NEAR(got.v, want.v, tol) << what << " down";
}

/// The smallest root of f in (0, hi], by a scan of `steps` and bisection; -1 when there is none.
double firstRoot(const std::function<double(double)>& f, double hi, int steps = 20000) {
    for (int k = 1; k <= steps; ++k) {
        double a = k == 1 ? 1e-9 : hi * (k - 1) / steps, b = hi * k / steps;
        if (f(a) * f(b) > 0.0) continue;
        for (int j = 0; j < 200; ++j) {
            const double m = 0.5 * (a + b);
            (f(a) * f(m) <= 0.0 ? b : a) = m;
        }
        return 0.5 * (a + b);
    }
    return -1.0;
}

SStation tieOn() {
    SStation s;
    s.md = 1000.0, s.tvd = 900.0, s.ns = 50.0, s.ew = 20.0, s.inc = 0.5, s.azi = 0.8;
    s.method = 2;
    return s;
}
/// A plan of ten stations holding the tie-on, the next line to be put after it.
CPlan fromTieOn() {
    CPlan p;
    p.NewData(10);
    p.LoadData(0, tieOn());
    p.m_nPrev = 0;
    return p;
}
SStation at(const CPlan& p, int i) {
    SStation s;
    p.DumpData(i, s);
    return s;
}
V pos(const SStation& s) {
    return {s.ew, s.ns, s.tvd};
}
/// Every station of `p` where `want` has it: position and depth [L], direction and rate [rad].
void expectSame(const CPlan& p, const std::vector<SStation>& want, const char* what) {
    ASSERT_EQ(p.m_stations.size(), want.size()) << what;
    for (std::size_t i = 0; i < want.size(); ++i) {
        SCOPED_TRACE(::testing::Message() << what << ", station " << i);
        const SStation s = at(p, static_cast<int>(i));
        expectNear(pos(s), pos(want[i]), TOL_POS, "position");
        EXPECT_NEAR(s.md, want[i].md, TOL_POS);
        for (auto f : {&SStation::inc, &SStation::azi, &SStation::dls, &SStation::tf})
            EXPECT_NEAR(s.*f, want[i].*f, TOL_ANG);
    }
}

/// What a backward line is given: its end and the start quantity of its code.
struct Back {
    int sub;
    V T;
    double inc, azi, K, TF;
    double md = 0.0, tvd = 0.0, sInc = 0.0, sAzi = 0.0;  // start quantities
    V B{0.0, 0.0, 0.0};                                  // back-target of "BACK Target"
};

void putBack(CPlan& p, const Back& b) {
    p.m_nFamily = 150, p.m_nSubMethod = b.sub, p.m_dDLS = b.K, p.m_dTF = b.TF;
    p.m_target = STarget();
    p.m_target.name = u"END", p.m_target.hasAngles = true, p.m_target.inc = b.inc;
    p.m_target.ew = b.T.e, p.m_target.ns = b.T.n, p.m_target.tvd = b.T.v, p.m_target.azi = b.azi;
    p.m_dMD = b.md, p.m_dTVD = b.tvd, p.m_dInc = b.sInc, p.m_dAzi = b.sAzi;
    p.m_strTarget = u"BT", p.m_dLength1 = b.B.v, p.m_dLength2 = b.B.n, p.m_dLength3 = b.B.e;
    p.PutData(-1);
}

/// A plan of the tie-on and one backward line: the line moves the tie-on to its start.
CPlan backOnly(const Back& b) {
    CPlan p = fromTieOn();
    putBack(p, b);
    return p;
}

/// The lines of the tests below: every code, arriving at one target.
std::vector<Back> backRows() {
    const V T{300.0, 400.0, 2000.0};
    const double K = 3.0 * kDeg / 30.0;
    std::vector<Back> rows = {
        {2, T, 60 * kDeg, 30 * kDeg, K, 40 * kDeg, 1000.0 + 450.0},  // end depth given
        {3, T, 60 * kDeg, 30 * kDeg, K, 150 * kDeg, 0.0, 1950.0},    // two arcs reach: the shorter
        {4, T, 60 * kDeg, 30 * kDeg, K, -30 * kDeg, 0.0, 0.0, 30 * kDeg},
        {5, T, 60 * kDeg, 30 * kDeg, K, 0.0, 0.0, 0.0, 40 * kDeg, 350 * kDeg},
        {5, T, 60 * kDeg, 30 * kDeg, K, 0.0, 0.0, 0.0, 60 * kDeg, 30 * kDeg},  // start = end
        {6, T, 60 * kDeg, 30 * kDeg, 0.0, 0.0},
    };
    Back bt{1, T, 60 * kDeg, 30 * kDeg, 0.0, 0.0};
    for (V B :
         {V{-200.0, 100.0, 1200.0}, T - 500.0 * dir(kPi / 3, kPi / 6), V{900.0, 800.0, 2400.0}})
        rows.push_back((bt.B = B, bt));  // a bend, straight behind, more than half a turn
    return rows;
}

}  // namespace

// Each code against the circle through the target tangent to the arrival direction, turned back by
// the dogleg the code asks for; the start quantity is met exactly and the two solved ends are joined
// by the minimum-curvature arc of that dogleg. Reading the line back gives the family and fields it
// was put with, and putting those again gives the same plan.
TEST(Backward, EachCodeMeetsTheCircleTurnedBackAndReadsBack) {
    for (const Back& b : backRows()) {
        SCOPED_TRACE(::testing::Message()
                     << "sub " << b.sub << " K " << b.K << " TF " << b.TF << " B " << b.B.e);
        const V te = dir(b.inc, b.azi);
        V kappa = std::cos(b.TF) * high(b.inc, b.azi) + std::sin(b.TF) * right(b.azi);
        const double R = b.K > 0 ? 1.0 / b.K : 0.0;
        auto startAt = [&](double dl) {
            return b.T - R * std::sin(dl) * te + R * (1 - std::cos(dl)) * kappa;
        };
        auto dirAt = [&](double dl) { return std::cos(dl) * te - std::sin(dl) * kappa; };
        double DL = 0.0, L = 0.0, arrivalTF = b.TF;
        V P{}, ts = te;
        switch (b.sub) {
        case 2: L = b.md > 1000.0 ? b.md - 1000.0 : b.md; break;
        case 3: DL = firstRoot([&](double d) { return startAt(d).v - b.tvd; }, kPi / 2); break;
        case 4: DL = firstRoot([&](double d) { return dirAt(d).v - std::cos(b.sInc); }, kPi); break;
        case 5: {
            ts = dir(b.sInc, b.sAzi);
            DL = std::acos(std::min(1.0, dot(ts, te)));
            if (DL > 0) kappa = (1.0 / std::sin(DL)) * (std::cos(DL) * te - ts);
            arrivalTF =
                DL > 0 ? std::atan2(dot(kappa, right(b.azi)), dot(kappa, high(b.inc, b.azi))) : 0.0;
            break;
        }
        case 6: L = (b.T.v - tieOn().tvd) / te.v; break;
        case 1: {
            P = b.B;
            const V d = b.B - b.T;
            const V side = d - dot(d, te) * te;
            L = std::sqrt(dot(d, d));
            if (dot(side, side) < 1e-18) break;  // on the arrival line behind the target: straight
            const V k = (1.0 / std::sqrt(dot(side, side))) * side;
            const double r = dot(d, d) / (2 * dot(d, k));
            DL = std::atan2(-dot(d, te) / r, 1 - dot(d, k) / r);
            if (DL < 0) DL += 2 * kPi;
            L = r * DL;
            arrivalTF = std::atan2(dot(k, right(b.azi)), dot(k, high(b.inc, b.azi)));
            ts = std::cos(DL) * te - std::sin(DL) * k;
            break;
        }
        }
        if (b.sub == 2 && b.K > 0) DL = b.K * L;
        if (b.sub != 1) {
            if (b.K > 0 && b.sub != 2) L = DL / b.K;
            P = b.K > 0 ? startAt(DL) : b.T - L * te;
            if (b.K > 0) ts = dirAt(DL);
        }

        CPlan p = backOnly(b);
        ASSERT_EQ(p.m_nError, 0);
        const std::vector<SStation> solved = p.m_stations;
        const SStation s = solved[0], e = solved[1];
        expectNear(pos(s), P, TOL_POS, "start");
        expectNear(dir(s.inc, s.azi), ts, TOL_ANG, "start direction");
        expectNear(pos(e), b.T, 0.0, "end");
        EXPECT_NEAR(e.md - s.md, std::max(L, 0.001), TOL_POS);  // touching depths part by 0.001
        EXPECT_NEAR(e.dl, DL, TOL_ANG);
        EXPECT_NEAR(std::remainder(e.tf - arrivalTF, 2 * kPi), 0.0, TOL_ANG);
        EXPECT_EQ(s.tvd, b.sub == 3 ? b.tvd : s.tvd);
        EXPECT_EQ(s.inc, b.sub == 4 || b.sub == 5 ? b.sInc : s.inc);
        EXPECT_EQ(s.azi, b.sub == 5 ? b.sAzi : s.azi);
        // Minimum curvature between the solved ends (the arcs here are shorter than pi).
        if (DL < kPi) {
            const double f = DL > 0 ? std::tan(DL / 2) / DL * L : L / 2;
            expectNear(pos(e) - pos(s), f * (dir(s.inc, s.azi) + te), TOL_POS, "chord");
        }

        p.GetData(1);
        EXPECT_EQ(p.m_nFamily, 150);
        EXPECT_EQ(p.m_nSubMethod, b.sub);
        EXPECT_EQ(p.m_dMD, e.md);  // the end depth, from which CL is put again
        p.PutData(1);
        ASSERT_EQ(p.m_nError, 0);
        expectSame(p, solved, "put again");
    }
}

// Every way a backward line fails: the line is named and neither of its stations moves.
TEST(Backward, FailuresNameTheLineAndMoveNothing) {
    const V T{300.0, 400.0, 2000.0};
    const double K = 3.0 * kDeg / 30.0, I = 60 * kDeg, A = 30 * kDeg;
    const struct {
        const char* name;
        Back b;
        int error;
    } rows[] = {
        {"-20 no course", {2, T, I, A, K, 0.0, 0.0}, -18},
        {"-20 half a turn or more", {2, T, I, A, K, 0.0, 1000.0 + 1900.0}, -4},
        {"-30 depth out of reach", {3, T, I, A, K, 0.0, 0.0, 500.0}, -17},
        {"-30 straight and level", {3, T, 90 * kDeg, A, 0.0, 0.0, 0.0, 1500.0}, -7},
        {"-40 no curvature", {4, T, I, A, 0.0, 0.0, 0.0, 0.0, 20 * kDeg}, -1},
        {"-40 same inclination", {4, T, I, A, K, 0.0, 0.0, 0.0, I}, -14},
        {"-60 no curvature", {5, T, I, A, 0.0, 0.0, 0.0, 0.0, 20 * kDeg, A}, -1},
        {"-50 above the tie-on", {6, V{300.0, 400.0, 100.0}, I, A, 0.0, 0.0}, -7},
        {"-10 back-target ahead", {1, T, I, A, 0.0, 0.0, 0, 0, 0, 0, T + 300.0 * dir(I, A)}, -12},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const CPlan p = backOnly(r.b);
        EXPECT_EQ(p.m_nError, r.error);
        EXPECT_EQ(p.m_nFirst, 1);
        EXPECT_EQ(p.m_nLast, 1);
        EXPECT_EQ(at(p, 0).tvd, r.b.sub == 1 ? r.b.B.v : tieOn().tvd);
        EXPECT_EQ(at(p, 0).inc, tieOn().inc);
        EXPECT_EQ(at(p, 1).tvd, r.b.T.v);
    }
}

// Positions of a solved plan turned back into a survey give its lines back; solving that survey
// keeps every position.
TEST(Ferranti, PositionsGiveTheLinesBack) {
    CPlan p = fromTieOn(), q = fromTieOn();
    const double lines[][3] = {{1300, 40, 60}, {1700, 55, 90}, {1750, 50, 95}, {2400, 20, 30}};
    for (const auto& l : lines) {
        p.m_nFamily = 90, p.m_nSubMethod = 1;
        p.m_dMD = l[0], p.m_dInc = l[1] * kDeg, p.m_dAzi = l[2] * kDeg;
        p.PutData(-1);
    }
    ASSERT_EQ(p.m_nError, 0);
    for (int i = 1; i <= 4; ++i) {
        SStation s;
        s.tvd = at(p, i).tvd, s.ns = at(p, i).ns, s.ew = at(p, i).ew, s.method = 40;
        q.LoadData(i, s);
    }
    EXPECT_EQ(q.ferranti(3, 2), 0);
    EXPECT_EQ(q.ferranti(-5, 100), 4);
    EXPECT_EQ(q.m_nError, 0);
    for (int i = 1; i <= 4; ++i) EXPECT_EQ(at(q, i).method, 30) << i;
    expectSame(q, p.m_stations, "from positions");
    q.PutData(0);
    ASSERT_EQ(q.m_nError, 0);
    expectSame(q, p.m_stations, "survey solved");
}
