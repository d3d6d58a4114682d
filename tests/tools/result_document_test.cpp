// Result text: trees as nlohmann::json::dump writes them, held port values written from their
// buffers, and floats as the shortest text that reads back as the same float.
#include "tools/quillix/result_document.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>

#include <xsi_vector3f.h>

namespace quillix::tool {
namespace {

using nlohmann::json;
using xsihost::PortValues;

std::string Text(const ResultDocument& document, int indent, bool replace = false) {
  std::ostringstream out;
  document.Write(out, indent, replace);
  return out.str();
}

TEST(ResultDocument, WritesTreesAsDumpDoes) {
  ResultDocument document;
  document.tree = json::parse(R"({"results": [{"node": "Quillix_divi", "log": [[2, "a\"b\\c"]],
      "outputs": [{"port": 2010, "status": 0, "values": [1, null, true, -4, [], {}, "é\u0001"]}]},
      []], "shutdownLog": [], "empty": {}})");
  EXPECT_EQ(Text(document, 2), document.tree.dump(2));
  EXPECT_EQ(Text(document, -1), document.tree.dump(-1));
  EXPECT_EQ(Text(document, 4), document.tree.dump(4));

  document.tree["log"] = "\xff";  // not UTF-8
  EXPECT_THROW(Text(document, 2), json::type_error);
  EXPECT_EQ(Text(document, -1, true),
            document.tree.dump(-1, ' ', false, json::error_handler_t::replace));
}

TEST(ResultDocument, WritesHeldValuesFromThePortBuffers) {
  ResultDocument document;
  PortValues points = PortValues::ArraysOf<XSI::MATH::CVector3f>(
      {{XSI::MATH::CVector3f(0.1f, 2, -0.0f)}, {}, {XSI::MATH::CVector3f(1e20f, 1e-7f, 3)}});
  points.written = {1, 0, 1};
  PortValues bits = PortValues::Singles<float>({std::numeric_limits<float>::quiet_NaN()});
  bits.written = {1};
  document.tree = {{"a", document.Hold(std::move(points))}, {"b", document.Hold(std::move(bits))}};
  EXPECT_EQ(Text(document, -1),
            R"({"a":[[[0.1,2.0,-0.0]],null,[[1e+20,1e-07,3.0]]],"b":["0x7FC00000"]})");
  EXPECT_EQ(Text(document, 2), document.Inline(document.tree).dump(2));
}

TEST(ResultDocument, FloatTextIsShortestAndReadsBackThroughADouble) {
  std::mt19937 random(5);
  for (int i = 0; i < 200000; ++i) {
    const float f = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (!std::isfinite(f)) continue;
    std::string text;
    AppendFloatText(f, text);
    const float back = static_cast<float>(std::strtod(text.c_str(), nullptr));
    ASSERT_EQ(std::bit_cast<std::uint32_t>(back), std::bit_cast<std::uint32_t>(f)) << text;
    char nine[32];
    std::snprintf(nine, sizeof nine, "%.9g", double(f));
    ASSERT_LE(text.size(), std::string(nine).size() + 2) << text;  // + ".0"
  }
  std::string text;
  for (float f : {0.01f, 1.0f, 0.3f, 123456.0f}) {
    AppendFloatText(f, text);
    text += ' ';
  }
  EXPECT_EQ(text, "0.01 1.0 0.3 123456.0 ");
}

}  // namespace
}  // namespace quillix::tool
