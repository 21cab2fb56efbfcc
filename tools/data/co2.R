# co2.R: writes examples/tour/mauna_loa_co2.h from R's copy of the monthly Mauna Loa series, with values that R computes.
# SPDX-License-Identifier: MIT
# Run from the repository's root: Rscript tools/data/co2.R > examples/tour/mauna_loa_co2.h
x <- as.numeric(co2)
anomaly <- x - mean(x)
number <- function(v) sprintf("%.17g", v)
known <- c(
  mean = mean(x),
  january_mean = mean(x[seq(1, length(x), 12)]),
  months_above_mean = sum(x > mean(x)),
  mean_of_months_above = mean(x[x > mean(x)]),
  sum_of_exponentials = sum(exp(anomaly / 10)))
cat("// mauna_loa_co2.h: monthly mean CO2 at Mauna Loa, January 1959 to December 1997, parts per million.\n")
cat("// SPDX-License-Identifier: MIT\n//\n")
cat("// Source     C. D. Keeling, T. P. Whorf, Scripps Institution of Oceanography; public domain.\n")
cat("// Made by    Rscript tools/data/co2.R, from the data set co2 of R; the known values are R's.\n")
cat("#ifndef ORIN_EXAMPLES_TOUR_MAUNA_LOA_CO2_H\n#define ORIN_EXAMPLES_TOUR_MAUNA_LOA_CO2_H\n\n")
cat("namespace mauna_loa {\n\n")
cat("constexpr int first_year = 1959;\nconstexpr int months = ", length(x), ";\n\n", sep = "")
cat("constexpr double co2[months] = {\n")
for (row in seq(1, length(x), 12)) {
  cat("    ", paste(sprintf("%.2f", x[row:(row + 11)]), collapse = ", "), ",  // ", 1959 + (row - 1) / 12, "\n", sep = "")
}
cat("};\n\nnamespace known {\n\n")
for (name in names(known)) cat("constexpr double ", name, " = ", number(known[[name]]), ";\n", sep = "")
cat("\n}  // namespace known\n}  // namespace mauna_loa\n\n#endif\n")
