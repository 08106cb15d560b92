// White-box access to CPlan's private routines for the tests. Each test file specialises
// PlanAccess<Tag> with a tag of its own and forwards to the routines it examines.
#pragma once

#include "plan/CPlan.h"

template <typename Tag>
struct PlanAccess;
