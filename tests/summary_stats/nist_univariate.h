// nist_univariate.h: univariate data sets with certified mean and standard deviation.
// SPDX-License-Identifier: MIT
//
// Source     NIST Statistical Reference Datasets, https://www.itl.nist.gov/div898/strd/univ/homepage.html, public
//            domain. Of the nine sets Lottery, Mavro and PiDigits are left out: their values were not at hand.
// Digits     how many of the certified ones the stored doubles can give: 0.1 is not a double, and beside 10^7 its error
//            shows in the ninth digit of the deviation.
#ifndef ORIN_TESTS_SUMMARY_STATS_NIST_UNIVARIATE_H
#define ORIN_TESTS_SUMMARY_STATS_NIST_UNIVARIATE_H

#include <string>
#include <vector>

namespace nist {

struct Set {
  std::string name;
  std::vector<double> x;
  double mean, deviation;
  double mean_digits, deviation_digits;
};

// centre, then low and high in turns, 500 times each.
inline std::vector<double> alternating(double centre, double low, double high) {
  std::vector<double> x{centre};
  for (int i = 0; i < 500; ++i) {
    x.push_back(low);
    x.push_back(high);
  }
  return x;
}

// Steel beam deflections.
inline std::vector<double> lew() {
  return {
      -213, -564, -35,  -15,  141,  115,  -420, -360, 203,  -338, -431, 194,  -220, -513, 154,  -125, -559, 92,   -21,
      -579, -52,  99,   -543, -175, 162,  -457, -346, 204,  -300, -474, 164,  -107, -572, -8,   83,   -541, -224, 180,
      -420, -374, 201,  -236, -531, 83,   27,   -564, -112, 131,  -507, -254, 199,  -311, -495, 143,  -46,  -579, -90,
      136,  -472, -338, 202,  -287, -477, 169,  -124, -568, 17,   48,   -568, -135, 162,  -430, -422, 172,  -74,  -577,
      -13,  92,   -534, -243, 194,  -355, -465, 156,  -81,  -578, -64,  139,  -449, -384, 193,  -198, -538, 110,  -44,
      -577, -6,   66,   -552, -164, 161,  -460, -344, 205,  -281, -504, 134,  -28,  -576, -118, 156,  -437, -381, 200,
      -220, -540, 83,   11,   -568, -160, 172,  -414, -408, 188,  -125, -572, -32,  139,  -492, -321, 205,  -262, -504,
      142,  -83,  -574, 0,    48,   -571, -106, 137,  -501, -266, 190,  -391, -406, 194,  -186, -553, 83,   -13,  -577,
      -49,  103,  -515, -280, 201,  300,  -506, 131,  -45,  -578, -80,  138,  -462, -361, 201,  -211, -554, 32,   74,
      -533, -235, 187,  -372, -442, 182,  -147, -566, 25,   68,   -535, -244, 194,  -351, -463, 174,  -125, -570, 15,
      72,   -550, -190, 172,  -424, -385, 198,  -218, -536, 96,
  };
}

// Michelson's speed of light in air, km/s less 299000.
inline std::vector<double> michelso() {
  std::vector<double> x{
      850, 740, 900, 1070, 930, 850, 950, 980, 980, 880, 1000, 980, 930, 650, 760, 810, 1000, 1000, 960, 960,
      960, 940, 960, 940,  880, 800, 850, 880, 900, 840, 830,  790, 810, 880, 880, 830, 800,  790,  760, 800,
      880, 880, 880, 860,  720, 720, 620, 860, 970, 950, 880,  910, 850, 870, 840, 840, 850,  840,  840, 840,
      890, 810, 810, 820,  800, 770, 760, 740, 750, 760, 910,  920, 890, 860, 880, 720, 840,  850,  850, 780,
      890, 840, 780, 810,  760, 810, 790, 810, 820, 850, 870,  870, 810, 740, 810, 940, 950,  800,  810, 870,
  };
  for (double& value : x) value = (299000 + value) / 1000;
  return x;
}

inline std::vector<Set> sets() {
  return {
      {"Lew", lew(), -177.435, 277.332168044316, 15, 14},
      {"Michelso", michelso(), 299.8524, 0.0790105478190518, 15, 13},
      {"NumAcc1", {10000001, 10000003, 10000002}, 10000002, 1, 15, 15},
      {"NumAcc2", alternating(1.2, 1.1, 1.3), 1.2, 0.1, 15, 14},
      {"NumAcc3", alternating(1000000.2, 1000000.1, 1000000.3), 1000000.2, 0.1, 15, 9},
      {"NumAcc4", alternating(10000000.2, 10000000.1, 10000000.3), 10000000.2, 0.1, 15, 8},
  };
}

}  // namespace nist

#endif
