// Per-thread switch to the "C" locale around file reading and writing.

#include "data/cnumeric.h"

namespace veloran {

namespace {

locale_t CLocale() {
    // Created once and never freed: it lives as long as the process.
    static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    return c;
}

}  // namespace

CNumericLocale::CNumericLocale() : previous_(uselocale(CLocale())) {}

CNumericLocale::~CNumericLocale() {
    uselocale(previous_);
}

}  // namespace veloran
