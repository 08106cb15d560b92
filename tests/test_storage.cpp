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

TEST(Storage, InsertOrdinaryAndBackward) {
    CPlan p = planOf({30, 1910, 1, 30});
    p.Insert(3, false);  // inside a two-station line: the point goes before the line
    EXPECT_EQ(p.m_nError, 0);
    EXPECT_EQ(codes(p), (std::vector<short>{30, 9999, 1910, 1, 30}));
    EXPECT_EQ(p.m_nFirst, 2);
    EXPECT_EQ(p.m_nPrev, 1);

    // A backward line goes after the last station of a two-station line: that station is doubled,
    // the copy, keeping its depth, becoming the backward line's end.
    CPlan b = planOf({1910, 1, 30});
    b.m_stations[2].dls = 0.01;
    b.Insert(2, true);
    EXPECT_EQ(b.m_nError, 0);
    EXPECT_EQ(codes(b), (std::vector<short>{1910, 1, -20, 30}));
    EXPECT_EQ(b.m_stations[2].target, CPlan::K_BACKTARGET);
    EXPECT_EQ(b.m_stations[3].md, 200.0);
    EXPECT_EQ(b.m_nFirst, 2);
    EXPECT_EQ(b.m_nPrev, 1);
}

// Refusals set their code (lines out of the array none) and leave the plan as it was.
TEST(Storage, InsertAndDeleteRefusals) {
    const struct {
        const char* name;
        bool insert;
        int line, error;
    } rows[] = {
        {"insert before the tie line", true, 0, -6}, {"insert at a backward line", true, 2, -6},
        {"delete the tie line", false, 0, -5},       {"insert past the array", true, 500, 0},
        {"delete a negative line", false, -4, 0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = planOf({30, -20, 30});
        p.m_nError = 99;
        if (r.insert)
            p.Insert(r.line, false);
        else
            p.Delete(r.line);
        EXPECT_EQ(p.m_nError, r.error);
        EXPECT_EQ(codes(p), (std::vector<short>{30, -20, 30}));
        EXPECT_EQ(p.m_stations.size(), 24u);
    }
}

// Delete re-solves the plan afterwards; the solve's outcome is tested with the solver.
TEST(Storage, DeleteTakesContinuationsAndFollowingBackwardLines) {
    const struct {
        const char* name;
        std::vector<short> before;
        int line;
        std::vector<short> after;
    } rows[] = {
        {"asked at a continuation", {30, 1910, 1, 50}, 3, {30, 50}},
        {"2001+ takes backward lines", {2910, 1, 1, -20, -10, 30}, 1, {30}},
        {"below 2001 keeps them", {1910, 1, -20, 30}, 1, {-20, 30}},
        {"continuations of the line before stay", {1910, 1, 30, 40}, 3, {1910, 1, 40}},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = planOf(r.before);
        p.Delete(r.line);
        EXPECT_EQ(codes(p), r.after);
    }
}
