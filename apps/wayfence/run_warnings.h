// What makes a run of the map component fruitless, on standard error, a line each.
#pragma once

#include "apps/wayfence/map_session.h"

namespace Wayfence {

/// Before the run: floors that can give no position, pictures that cannot be shown.
void WarnOfProject(const TMapSession& ASession);

/// After the run, when it gave no position: why.
void WarnOfNoEstimate(const TMapSession& ASession);

}  // namespace Wayfence
