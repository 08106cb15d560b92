// The plan object's storage: sizes, copies, insert and delete, and bad indices.
#include <gtest/gtest.h>

#include <vector>

#include "plan/CPlan.h"
#include "support/PlanAccess.h"

struct StorageTag;
template <>
struct PlanAccess<StorageTag> {
    static void resize(CPlan& p) { p.resize(); }
};
using Storage = PlanAccess<StorageTag>;

namespace {

SStation station(double md, short code) {
    SStation s;
    s.md = md, s.method = code;
    return s;
}

/// A plan of the given codes after the tie-on (code 2); station i has md 100 i.
CPlan planOf(const std::vector<short>& codes) {
    CPlan p;
    p.NewData(static_cast<int>(codes.size()) + 1);
    p.LoadData(0, station(0.0, 2));
    for (std::size_t i = 0; i < codes.size(); ++i)
        p.LoadData(static_cast<int>(i) + 1, station(100.0 * (i + 1), codes[i]));
    return p;
}

std::vector<short> codes(const CPlan& p) {
    std::vector<short> c;
    for (unsigned i = 1; i < p.GetSize(); ++i) c.push_back(p.m_stations[i].method);
    return c;
}

}  // namespace

// Sizes, bad indices that touch nothing, targets, copies, save and restore, and growth by 20.
TEST(Storage, SizesIndicesAndCopies) {
    CPlan p;
    EXPECT_EQ(p.GetSize(), 1u);  // the tie-on counts even before it exists
    p.NewData(-5);
    EXPECT_EQ(p.m_stations.size(), 20u);  // room for 20 more than asked, a negative asking none
    EXPECT_EQ(planOf({30, 0, 30}).GetSize(), 2u);  // the plan ends at the first code 0

    p = planOf({30, 40});
    for (int bad : {-1, 23}) {  // nothing read or written, cursor untouched
        SCOPED_TRACE(bad);
        SStation keep = station(-1.0, 77);
        p.DumpData(bad, keep);
        EXPECT_EQ(keep.md, -1.0);
        p.LoadData(bad, station(9.0, 9));
        EXPECT_EQ(p.m_nPrev, 2);
    }
    p.NewTarget(2);
    STarget t;
    t.name = u"T1", t.tvd = 3000.0;
    for (int i : {1, 2, -1}) p.LoadTarget(i, t);
    ASSERT_EQ(p.m_targets.size(), 2u);
    EXPECT_TRUE(p.m_targets[0].name.empty());
    p.NewTarget(3);  // growing keeps the targets there
    EXPECT_EQ(p.m_targets[1].tvd, 3000.0);

    p.m_walk.push_back({100.0, 0.001});
    CPlan b(p), c;
    c = p;
    for (const CPlan* q : {&b, &c}) {
        EXPECT_EQ(q->m_walk.size(), 1u);
        EXPECT_EQ(codes(*q), (std::vector<short>{30, 40}));
    }
    p.SaveData();
    p.m_stations[1].md = 55.0;
    p.RestoreData();
    EXPECT_EQ(p.m_stations[1].md, 100.0);
    p.ClearAll();
    EXPECT_TRUE(p.m_stations.empty() && p.m_saved.empty() && p.m_targets.empty());
    EXPECT_EQ(p.m_walk.size(), 1u);  // the walk table is the client's

    CPlan q = planOf(std::vector<short>(13, 30));  // 14 used of 34
    Storage::resize(q);
    EXPECT_EQ(q.m_stations.size(), 34u);
    q.m_stations.resize(20);  // 14 used + 6 >= 20: grows by 20, new stations reset
    Storage::resize(q);
    EXPECT_EQ(q.m_stations.size(), 40u);
    EXPECT_EQ(q.m_stations[39].method, 0);
}

// Insert and delete by line: the codes after, and the error (refusals leave the plan as it was,
// lines out of the array set none). Delete re-solves the plan; the solve is tested with the solver.
TEST(Storage, InsertAndDelete) {
    enum Op { INSERT, BACKWARD, DELETE };
    constexpr int ANY = 1;  // the error of a re-solve, not checked here
    const struct {
        const char* name;
        Op op;
        std::vector<short> before;
        int line;
        std::vector<short> after;
        int error;
    } rows[] = {
        {"point before its line", INSERT, {30, 1910, 1, 30}, 3, {30, 9999, 1910, 1, 30}, 0},
        {"backward after a two-station line", BACKWARD, {1910, 1, 30}, 2, {1910, 1, -20, 30}, 0},
        {"insert before the tie line", INSERT, {30, -20, 30}, 0, {30, -20, 30}, -6},
        {"insert at a backward line", INSERT, {30, -20, 30}, 2, {30, -20, 30}, -6},
        {"delete the tie line", DELETE, {30, -20, 30}, 0, {30, -20, 30}, -5},
        {"insert past the array", INSERT, {30, -20, 30}, 500, {30, -20, 30}, 0},
        {"delete a negative line", DELETE, {30, -20, 30}, -4, {30, -20, 30}, 0},
        {"delete at a continuation", DELETE, {30, 1910, 1, 50}, 3, {30, 50}, ANY},
        {"2001+ takes backward lines", DELETE, {2910, 1, 1, -20, -10, 30}, 1, {30}, ANY},
        {"below 2001 keeps them", DELETE, {1910, 1, -20, 30}, 1, {-20, 30}, ANY},
        {"the line before keeps its own", DELETE, {1910, 1, 30, 40}, 3, {1910, 1, 40}, ANY},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = planOf(r.before);
        p.m_nError = 99;
        if (r.op == DELETE)
            p.Delete(r.line);
        else
            p.Insert(r.line, r.op == BACKWARD);
        EXPECT_EQ(codes(p), r.after);
        if (r.error != ANY) {
            EXPECT_EQ(p.m_nError, r.error);
        }
        if (r.error == 0 && r.op != DELETE && r.line < 100) {
            EXPECT_EQ(p.m_nFirst, 2);
            EXPECT_EQ(p.m_nPrev, 1);
        }
    }
    // The backward line's end is a copy of the line's last station, keeping its depth.
    CPlan b = planOf({1910, 1, 30});
    b.Insert(2, true);
    EXPECT_EQ(b.m_stations[2].target, CPlan::K_BACKTARGET);
    EXPECT_EQ(b.m_stations[3].md, 200.0);
}
