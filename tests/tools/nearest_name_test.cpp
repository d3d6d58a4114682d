// The suggestion helper behind every "did you mean" of `quillix`, and the JSON Pointer places
// its messages carry.
#include <gtest/gtest.h>

#include "tools/quillix/json_place.h"
#include "tools/quillix/nearest_name.h"

namespace quillix::tool {
namespace {

TEST(NearestName, EditDistanceCountsSingleByteEditsIgnoringCase) {
  EXPECT_EQ(EditDistance("kitten", "sitting"), 3u);
  EXPECT_EQ(EditDistance("", "abc"), 3u);
  EXPECT_EQ(EditDistance("abc", ""), 3u);
  EXPECT_EQ(EditDistance("", ""), 0u);
  EXPECT_EQ(EditDistance("DivideBy", "divideby"), 0u);
  EXPECT_EQ(EditDistance("evl", "eval"), 1u);
  EXPECT_EQ(EditDistance("Valeu", "Value"), 1u);  // a swap of neighbours is one edit
  EXPECT_EQ(EditDistance("ca", "abc"), 3u);       // each substring is edited once
}

TEST(NearestName, SuggestsOnlyLikelyMisspellings) {
  const std::vector<std::string> commands{"list", "eval", "run", "scene"};
  EXPECT_EQ(NearestName("evl", commands), "eval");
  EXPECT_EQ(NearestName("lst", commands), "list");
  EXPECT_EQ(NearestName("frobnicate", commands), "");
  EXPECT_EQ(NearestName("", commands), "");
  const std::vector<std::string> nodes{"Quillix_divi", "Quillix_otos", "Quillix_nan",
                                       "Quillix_nan2"};
  EXPECT_EQ(NearestName("Quillix_dvi", nodes), "Quillix_divi");
  // The shared prefix does not make a far-off name near.
  EXPECT_EQ(NearestName("Quillix_nothing", nodes), "");
  // Equals: the first in the given order.
  EXPECT_EQ(NearestName("Quillix_nan3", nodes), "Quillix_nan");
  EXPECT_EQ(DidYouMean("elemnts", {"node", "elements"}), "; did you mean \"elements\"?");
  EXPECT_EQ(DidYouMean("zzz", {"node", "elements"}), "");
}

TEST(NearestName, PlacesAreJsonPointers) {
  const JsonPlace root;
  EXPECT_EQ(root.Pointer(), "/");
  const JsonPlace requests(root, "requests");
  const JsonPlace second(requests, std::size_t(2));
  const JsonPlace odd(second, "a/b~c");
  const JsonPlace empty(odd, "");
  EXPECT_EQ(second.Pointer(), "/requests/2");
  EXPECT_EQ(odd.Pointer(), "/requests/2/a~1b~0c");
  EXPECT_EQ(empty.Pointer(), "/requests/2/a~1b~0c/");
}

}  // namespace
}  // namespace quillix::tool
