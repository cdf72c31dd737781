// Puts LC_NUMERIC back to "C" after Qt has set the user's locale.

#include "platform/numericlocale.h"

#include <clocale>

namespace veloran {

void UseCNumericLocale() {
    std::setlocale(LC_NUMERIC, "C");
}

}  // namespace veloran
