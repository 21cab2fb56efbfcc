# co2_by_year.R: writes examples/tour/co2_by_year.h, R's summary of each year of the monthly Mauna Loa series.
# SPDX-License-Identifier: MIT
# Run from the repository's root: Rscript tools/data/co2_by_year.R > examples/tour/co2_by_year.h
years <- matrix(as.numeric(co2), nrow = 12)
quartiles <- apply(years, 2, quantile, probs = c(0.25, 0.5, 0.75), type = 7, names = FALSE)
third <- apply(years, 2, function(x) mean((x - mean(x))^3))
known <- rbind(colMeans(years), apply(years, 2, var), apply(years, 2, min), quartiles, apply(years, 2, max),
               third / apply(years, 2, var)^1.5)
cat("// co2_by_year.h: what R says of the twelve months of each year of the series in mauna_loa_co2.h.\n")
cat("// SPDX-License-Identifier: MIT\n//\n")
cat("// Made by    Rscript tools/data/co2_by_year.R: mean, var, min, quantile of type 7, max, third central moment over\n")
cat("//            var^1.5, cor\n")
cat("#ifndef ORIN_EXAMPLES_TOUR_CO2_BY_YEAR_H\n#define ORIN_EXAMPLES_TOUR_CO2_BY_YEAR_H\n\n")
cat("namespace mauna_loa {\n\n")
cat("struct YearSummary {\n  double mean, variance, minimum, lower_quartile, median, upper_quartile, maximum, skewness;\n};\n\n")
cat("constexpr YearSummary known_years[] = {\n")
for (k in seq_len(ncol(known))) {
  digits <- sprintf("%.17g", known[, k])
  cat("    {", paste(digits[1:5], collapse = ", "), ",  // ", 1958 + k, "\n     ", paste(digits[6:8], collapse = ", "), "},\n",
      sep = "")
}
cat("};\n\n")
cat("// Correlation of the months of the first and the last year.\n")
cat("constexpr double known_correlation = ", sprintf("%.17g", cor(years[, 1], years[, 39])), ";\n", sep = "")
cat("\n}  // namespace mauna_loa\n\n#endif\n")
