#include "util/spare_memory.h"

#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace kavio {

SpareMemory::~SpareMemory() {
#ifdef __GLIBC__
    if (mIsMuch) malloc_trim(0);
#endif
}

}  // namespace kavio
