// Uses two installed cores as a program outside this tree would, and checks their answers.
// Built by tests/install/run.sh against an installed prefix, once through find_package and
// once through pkg-config; prints "ok" and exits 0 when both answers are right.
#include <cstdio>
#include <vector>

#include "core/curve/line_simplify.h"
#include "core/math/int_divide.h"

int main() {
  const quillix::QuotientRemainder d = quillix::DivideInt(-7, 2);
  const std::vector<quillix::Vec3f> line = {{0, 0, 0}, {1, 0.01f, 0}, {2, 0, 0}, {3, 2, 0}};
  const std::vector<quillix::Vec3f> simplified =
      quillix::SimplifyPolyline(line, 0.5f, false, false);
  if (d.quotient != -3 || d.remainder != -1 || simplified.size() != 3) {
    std::printf("wrong: %d %d, %zu points\n", d.quotient, d.remainder, simplified.size());
    return 1;
  }
  std::printf("ok\n");
  return 0;
}
