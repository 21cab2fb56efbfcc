// late_binding_probe: a process that binds to siblings as its arguments say.
// SPDX-License-Identifier: MIT
#include <cstdio>
#include <string>

#include "service/late_binding.h"
#include "tests/support/process.h"

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "load") {
      if (process::load(argv[++i]) == nullptr) std::printf("cannot load %s\n", argv[i]);
    } else if (word == "allocate") {
      std::printf("%d\n", orin::service::allocate(16, 16) != nullptr);
    } else if (word == "core-name") {
      orin::service::resolve(orin::service::Sibling::core, argv[++i]);
    } else if (word == "layer-name") {
      orin::service::resolve(orin::service::Sibling::threading_layer, argv[++i]);
    } else if (word == "dsyr") {
      const std::int32_t one = 1;
      const double scale = 1, x = 1;
      double answer = 0;
      orin::service::blas::dsyr("U", &one, &scale, &x, &one, &answer, &one);
      std::printf("%s\n", answer == 1 ? "ostar" : answer == 2 ? "sequential" : answer == 3 ? "pgi" : "nobody");
    }
  }
}
