// The single-line solvers: special branches by hand geometry, round trips between the solvers, the
// depth an arc reaches, and every failure they report.
#include <gtest/gtest.h>

#include <cmath>

#include "plan/CPlan.h"
#include "support/PlanAccess.h"

struct SolversTag;
template <>
struct PlanAccess<SolversTag> {
    static void solve(CPlan& p, int n, int side) {
        switch (n) {
        case 1: p.solve1(); break;
        case 2: p.solve2(); break;
        case 3: p.solve3(); break;
        case 4: p.solve4(); break;
        case 6: p.solve6(); break;
        case 8: p.solve8(side); break;
        case 9: p.solve9(side); break;
        case 10: p.solve10(); break;
        case 11: p.solve11(); break;
        case 12: p.solve12(); break;
        case 13: p.solve13(); break;
        default: FAIL() << "no solver " << n;
        }
    }
};
using Solvers = PlanAccess<SolversTag>;

namespace {

constexpr double ANG_TOL = 1e-9;  ///< angles [rad]
constexpr double LEN_TOL = 1e-6;  ///< lengths and depths [L]
const double PI_ = std::acos(-1.0);
double deg(double d) {
    return d * PI_ / 180.0;
}
/// An angle difference wrapped into (-pi, pi], for comparing angles that may differ by a turn.
double wrapped(double a) {
    return std::remainder(a, 2.0 * PI_);
}

/// One arc problem: start direction, the end quantities given, curvature and depth change. The
/// start is at md 0, so the end md is the course length.
struct In {
    double I1, A1, I2, A2, DL, TF, K, dV;
};
using Out = double SStation::*;
constexpr Out INC = &SStation::inc, AZI = &SStation::azi, DL = &SStation::dl, TF = &SStation::tf,
              COURSE = &SStation::md;

CPlan load(const In& in) {
    CPlan p;
    p.m_stnPrev.tvd = 500.0, p.m_stnPrev.inc = in.I1, p.m_stnPrev.azi = in.A1;
    p.m_stnC.inc = in.I2, p.m_stnC.azi = in.A2, p.m_stnC.dl = in.DL, p.m_stnC.tf = in.TF;
    p.m_stnC.dls = in.K, p.m_stnC.tvd = 500.0 + in.dV;
    return p;
}

}  // namespace

// The branches that the round trips below cannot reach (vertical and horizontal ends, flat turns,
// wraps across north, solve12's course), then every failure. A solver never clears an error
// already set.
TEST(Solvers, HandGeometryAndFailures) {
    const struct {
        const char* name;
        int solver, side;
        In in;
        Out out;  // null for a failure
        double expected;
    } rows[] = {
        {"1 from vertical, A2 < 0", 1, 0, {0, 0, deg(30), deg(-160), 0, 0, 0, 0}, TF, deg(200)},
        {"1 flat left turn", 1, 0, {deg(90), deg(20), deg(90), deg(350), 0, 0, 0, 0}, TF, -PI_ / 2},
        {"2 across north", 2, 0, {deg(90), deg(350), deg(90), deg(20), 0, 0, 0, 0}, DL, deg(30)},
        {"3 vertical: A2 = TF", 3, 0, {0, deg(90), 0, 0, deg(25), deg(200), 0, 0}, AZI, deg(200)},
        {"6 flat on horizontal", 6, 0, {deg(90), 0, 0, deg(30), 0, deg(90), 0, 0}, INC, deg(90)},
        {"8 flat left", 8, 1, {deg(90), deg(350), deg(90), 0, deg(30), 0, 0, 0}, AZI, deg(320)},
        {"10 end vertical", 10, 0, {deg(30), 0, 0, 0, 0, deg(90), 0, 0}, DL, deg(30)},
        {"12 quarter circle", 12, 0, {0, 0, deg(90), deg(70), 0, 0, 0, 1000}, COURSE, 500 * PI_},
        {"6 pure build cannot turn", 6, 0, {deg(30), 0, 0, deg(30), 0, 0, 0, 0}, nullptr, -8},
        {"8 vertical start", 8, 0, {0, 0, deg(30), 0, deg(30), 0, 0, 0}, nullptr, -1},
        {"9 beyond the dogleg", 9, 0, {deg(30), 0, 0, deg(90), deg(10), 0, 0, 0}, nullptr, -1},
        {"10 no inc change", 10, 0, {deg(60), 0, deg(60), 0, 0, deg(90), 0, 0}, nullptr, -14},
        {"11 zero curvature", 11, 0, {deg(30), 0, 0, 0, 0, 0, 0, 300}, nullptr, -1},
        {"11 deeper than the radius", 11, 0, {0, 0, 0, 0, 0, 0, 1e-3, 1500}, nullptr, -17},
        {"12 horizontal", 12, 0, {deg(90), deg(10), deg(90), deg(10), 0, 0, 0, 100}, nullptr, -7},
        {"13 below vertical",
         13,
         0,
         {deg(30), deg(40), 0, deg(40), 0, 0, 1e-3, 5000},
         nullptr,
         -18},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = load(r.in);
        p.m_nError = r.out ? -4 : 0;
        Solvers::solve(p, r.solver, r.side);
        EXPECT_EQ(p.m_nError, r.out ? -4 : static_cast<int>(r.expected));
        if (r.out) {
            EXPECT_NEAR(p.m_stnC.*r.out, r.expected, r.out == COURSE ? LEN_TOL : ANG_TOL);
        }
    }
}

// An arc laid from (DL, TF) by solve4 and solve3 is the one vector algebra gives, and every solver
// that inverts it gives its inputs back.
TEST(Solvers, RoundTripsThroughOneArc) {
    const struct {
        double I1, A1, DL, TF;
    } arcs[] = {{deg(30), deg(40), deg(20), deg(60)},
                {deg(60), deg(300), deg(45), deg(-150)},
                {deg(100), deg(10), deg(30), deg(150)}};
    for (const auto& a : arcs) {
        SCOPED_TRACE(testing::Message() << "arc from " << a.I1 << " DL " << a.DL << " TF " << a.TF);
        CPlan p = load({a.I1, a.A1, 0, 0, a.DL, a.TF, 0, 0});
        Solvers::solve(p, 4, 0);
        Solvers::solve(p, 3, 0);
        const double I2 = p.m_stnC.inc, A2 = p.m_stnC.azi;
        // t2 = cos DL t1 + sin DL (cos TF high + sin TF right)
        const double cD = std::cos(a.DL), sD = std::sin(a.DL), cT = std::cos(a.TF);
        const double t2v = cD * std::cos(a.I1) - sD * cT * std::sin(a.I1);
        const double t2e =
            cD * std::sin(a.I1) * std::sin(a.A1) +
            sD * (cT * std::cos(a.I1) * std::sin(a.A1) + std::sin(a.TF) * std::cos(a.A1));
        const double t2n =
            cD * std::sin(a.I1) * std::cos(a.A1) +
            sD * (cT * std::cos(a.I1) * std::cos(a.A1) - std::sin(a.TF) * std::sin(a.A1));
        EXPECT_NEAR(I2, std::acos(t2v), ANG_TOL);
        EXPECT_NEAR(wrapped(A2 - std::atan2(t2e, t2n)), 0.0, ANG_TOL);

        const auto back = [&](int n, int side, Out o) {
            CPlan q = load({a.I1, a.A1, I2, A2, a.DL, a.TF, 0, 0});
            q.m_stnC.inc = q.m_stnC.azi = q.m_stnC.dl = q.m_stnC.tf = NAN;  // only the inputs
            if (n == 1 || n == 2 || n == 8 || n == 10) q.m_stnC.inc = I2;
            if (n == 1 || n == 2 || n == 6 || n == 9) q.m_stnC.azi = A2;
            if (n == 8 || n == 9) q.m_stnC.dl = a.DL;
            if (n == 6 || n == 10) q.m_stnC.tf = a.TF;
            Solvers::solve(q, n, side);
            EXPECT_EQ(q.m_nError, 0) << "solve" << n;
            return q.m_stnC.*o;
        };
        EXPECT_NEAR(back(2, 0, DL), a.DL, ANG_TOL);
        EXPECT_NEAR(wrapped(back(1, 0, TF) - a.TF), 0.0, ANG_TOL);
        EXPECT_NEAR(back(6, 0, INC), I2, ANG_TOL);
        EXPECT_NEAR(back(10, 0, DL), a.DL, ANG_TOL);
        const int side = wrapped(A2 - a.A1) > 0.0 ? 0 : 1;
        EXPECT_NEAR(wrapped(back(8, side, AZI) - A2), 0.0, ANG_TOL);
        if (I2 < deg(90)) {  // asin gives the roots of solve9 up to the horizontal only
            const double up = back(9, 0, INC), low = back(9, 1, INC);
            EXPECT_NEAR(std::fmin(std::fabs(up - I2), std::fabs(low - I2)), 0.0, ANG_TOL);
        }
    }
}

// Whichever sine root solve11 takes, its arc of radius 1000 ends at the wanted depth: the down
// part of the chord, (sin DL cos I1 - (1 - cos DL) sin I1 cos TF) / k. Where the dogleg is known in
// closed form (depth sin-differences of the inclinations in a vertical plane) it is checked too.
TEST(Solvers, Solve11ReachesTheDepth) {
    const double X = NAN;  // dogleg not checked
    const struct {
        const char* name;
        double I1, TF, dV, DL;
    } rows[] = {{"quarter circle", 0, 0, 1000, deg(90)},
                {"smaller arc kept: 30 to asin 0.8", deg(30), 0, 300, std::atan2(4, 3) - deg(30)},
                {"only the first root: drop from horizontal", deg(90), PI_, 500, deg(60)},
                {"smaller arc refused", deg(115), deg(105), -100, X}};
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = load({r.I1, 0, 0, 0, 0, r.TF, 1e-3, r.dV});
        Solvers::solve(p, 11, 0);
        EXPECT_EQ(p.m_nError, 0);
        const double dl = p.m_stnC.dl;
        const double down =
            std::sin(dl) * std::cos(r.I1) - (1 - std::cos(dl)) * std::sin(r.I1) * std::cos(r.TF);
        EXPECT_NEAR(down / 1e-3, r.dV, LEN_TOL);
        if (!std::isnan(r.DL)) {
            EXPECT_NEAR(dl, r.DL, ANG_TOL);
        }
    }
}
