// Random integers for test signals.
#pragma once

namespace gfast {

// An integer of [xi_imin, xi_imax] from the C library's generator; xi_imin when the range is empty.
int randi(int xi_imin, int xi_imax);

}  // namespace gfast
