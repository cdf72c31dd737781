// Numbers on the wire and in files always use '.' as the decimal point.
#pragma once

namespace veloran {

// Qt applies the user's locale to the C library when the application object
// is created; a decimal comma would then reach printf and every radio. Call
// right after creating the QCoreApplication.
void UseCNumericLocale();

}  // namespace veloran
