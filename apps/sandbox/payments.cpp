#include "service.h"

namespace kavio::sandbox {

Routes paymentRoutes() { return {}; }

}  // namespace kavio::sandbox
