#include "support/StepTestParent.h"

namespace quillon {

StepTestParent::StepTestParent()
    : prefix(settings.outputPrefix)
{
}

} // namespace quillon
