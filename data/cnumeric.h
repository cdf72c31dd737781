// Numbers in files use a '.' decimal point whatever the user's locale: every
// reader and writer of a data file holds a CNumericLocale while it formats or
// converts numbers.
#pragma once

#include <locale.h>

namespace veloran {

// Switches the calling thread to the "C" locale for as long as it lives and
// puts the thread's previous locale back afterwards. Other threads are not
// affected (uselocale is per thread).
class CNumericLocale {
  public:
    CNumericLocale();
    ~CNumericLocale();
    CNumericLocale(const CNumericLocale&) = delete;
    CNumericLocale& operator=(const CNumericLocale&) = delete;

  private:
    locale_t previous_;
};

}  // namespace veloran
