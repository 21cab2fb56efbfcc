// tour.h: what the sections of the tour share: the loaded module, the data set, a table and a tally of checks.
// SPDX-License-Identifier: MIT
#ifndef ORIN_EXAMPLES_TOUR_TOUR_H
#define ORIN_EXAMPLES_TOUR_TOUR_H

namespace tour {

// The exported function `name` of the module, typed; ends the program when it is absent.
void* exported(const char* name);

template <class Function>
Function* exported(const char* name) {
  return reinterpret_cast<Function*>(exported(name));
}

void heading(const char* text);

// Counts a check and gives the word for its outcome, "ok" or "WRONG".
const char* tally(bool passed);

// Prints "what  value  (known ...)" and counts a failure unless the value is within `tolerance` of the known one.
void check(const char* what, double value, double known, double tolerance);

// The same for a property that holds or does not.
void check(const char* what, bool holds);

}  // namespace tour

// The sections, in the order of the tour.
void tour_vector_math();
void tour_functions();
void tour_rng();
void tour_conv(const double* series, int count);
void tour_summary_stats();
void tour_data_fitting();

#endif
