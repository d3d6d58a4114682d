// The request reader decodes "values" lists to exactly the bytes the plain reader makes of them,
// and gives up — so that the plain reader speaks — wherever the two could differ.
#include "tools/quillix/request_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "support/request_reader_check.h"

namespace quillix::tool {
namespace {

using nlohmann::json;

// Reads `text` both ways and expects them to agree; returns how many lists were decoded.
std::size_t ExpectSameAsPlainReader(const std::string& text) {
  json document;
  DecodedValues decoded;
  EXPECT_TRUE(ReadRequestDocument(text, document, decoded)) << text;
  std::size_t count = 0;
  EXPECT_EQ(RequestReaderDisagreement(text, &count), "") << text;
  return count;
}

std::string Request(const std::string& inputs) {
  return R"({"requests": [{"node": "Quillix_slins", "port": 2010, "inputs": {)" + inputs + "}}]}";
}

TEST(RequestReader, DecodesEveryValueTypeToThePlainReadersBytes) {
  const std::vector<std::string> inputs = {
      R"("a": {"type": "float", "values": [0, -0, -0.0, 1e-7, 0.1, 3.4028234e38, -3.4028234e38,
               1.17549435e-38, 1e-45, 16777217, 9007199254740993, 12345678901234567890123,
               0.30000001192092896, 2.5e+3, 7E-2]})",
      R"("a": {"type": "int", "values": [0, -0, 2147483647, -2147483648, 17]})",
      R"("a": {"type": "bool", "values": [true, false]})",
      R"("a": {"type": "vector3", "values": [[1, 2, 3], [ 0.5 ,-1e3,	4 ]]})",
      R"("a": {"type": "vector2", "structure": "array", "values": [[[1, 2]], [], [[3, 4], [5, 6]]]})",
      R"("a": {"type": "matrix44", "values": [[[1,0,0,0],[0,1,0,0],[0,0,1,0],[1,2,3,1]],
               [1,0,0,0,0,1,0,0,0,0,1,0,4,5,6,1]]})",
      R"("a": {"type": "matrix33", "structure": "array", "values": [[[[1,2,3],[4,5,6],[7,8,9]]]]})",
      R"("a": {"type": "shape", "values": [[3, 1, 2.5, 0]]})",
      R"("a": {"type": "quaternion", "constant": true, "values": [[1, 0, 0, 0]]},
         "b": {"type": "color4", "values": []})",
  };
  for (const std::string& in : inputs) EXPECT_GE(ExpectSameAsPlainReader(Request(in)), 1u) << in;
  // A bare list of requests, and group instances.
  EXPECT_EQ(ExpectSameAsPlainReader(R"([{"node": "n", "inputs": {"a": {"type": "int",
      "values": [1]}}, "instances": [{"b": {"type": "float", "values": [2]}},
      {"b": {"type": "float", "values": [3]}}]}])"),
            3u);
}

TEST(RequestReader, LeavesListsItCannotTypeInTheDocument) {
  // "type" after the list, strings, inputs bound to the scene.
  EXPECT_EQ(ExpectSameAsPlainReader(Request(R"("a": {"values": [1, 2], "type": "float"},
      "b": {"type": "string", "values": ["x"]}, "c": {"from": {"object": "o"}, "values": [1]},
      "d": {"type": "vector9", "values": [1]})")),
            0u);
}

TEST(RequestReader, GivesUpWhereThePlainReaderMustSpeak) {
  const std::vector<std::string> documents = {
      Request(R"("a": {"type": "float", "values": [1, 2,]})"),         // syntax
      Request(R"("a": {"type": "float", "values": ["0x7FC00000"]})"),  // bits of a NaN
      Request(R"("a": {"type": "float", "values": [3.4028235e38]})"),  // beyond a float
      Request(R"("a": {"type": "float", "values": [1e400]})"),         // beyond a double
      Request(R"("a": {"type": "float", "values": [01]})"),            // not JSON
      Request(R"("a": {"type": "int", "values": [1.5]})"),             // a fraction
      Request(R"("a": {"type": "int", "values": [2147483648]})"),      // beyond 32 bits
      Request(R"("a": {"type": "vector3", "values": [[1, 2]]})"),      // too short
      Request(R"("a": {"type": "matrix33", "values": [[[1,2,3],[4,5,6]]]})"),
      Request(R"("a": {"type": "float", "values": [1], "structure": "array"})"),
      Request(R"("a": {"type": "float", "values": [1], "from": {}})"),
      Request(R"("a": {"type": "float", "values": [1], "values": [2]})"),  // repeated key
      Request(R"("a": {"type": "float", "val\u0075es": [1]})"),            // escaped key
      Request(R"("a": {"type": "float", "values": [1]}, "a": {"type": "float", "values": [2]})"),
      Request(R"("a": {"type": "float", "values": [1]})") + " {}",  // trailing text
      Request(R"("a": {"type": "float", "values": [)" + std::string(70, '1') + "]}"),
  };
  for (const std::string& text : documents) {
    json document;
    DecodedValues decoded;
    EXPECT_FALSE(ReadRequestDocument(text, document, decoded)) << text;
  }
}

// Random numbers as people and programs write them, in a file larger than the reader's block so
// that numbers straddle the blocks' seams.
TEST(RequestReader, RandomFloatTextsReadAsThePlainReaderReadsThem) {
  std::mt19937_64 random(11);
  std::string values;
  char text[64];
  for (int i = 0; i < 60000; ++i) {
    const double magnitude = std::pow(10.0, std::uniform_int_distribution<int>(-40, 38)(random));
    const double x = std::uniform_real_distribution<double>(-1, 1)(random) * magnitude;
    static const char* const kFormats[] = {"%.17g", "%.9g", "%g", "%.3e", "%.0f"};
    std::snprintf(text, sizeof text, kFormats[i % 5], i % 5 == 4 ? std::fmod(x, 1e15) : x);
    values += (i ? "," : "") + std::string(text);
  }
  const std::string document = Request(R"("a": {"type": "float", "values": [)" + values + "]}");
  EXPECT_EQ(ExpectSameAsPlainReader(document), 1u);

  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("request_reader_" + std::to_string(getpid()));
  std::ofstream(path) << document;
  const int fd = ::open(path.c_str(), O_RDONLY);
  json fromFile, fromText;
  DecodedValues decodedFile, decodedText;
  ASSERT_TRUE(ReadRequestDocument(fd, fromFile, decodedFile));
  ::close(fd);
  std::filesystem::remove(path);
  ASSERT_TRUE(ReadRequestDocument(document, fromText, decodedText));
  const json& inputFile = fromFile["requests"][0]["inputs"]["a"];
  const json& inputText = fromText["requests"][0]["inputs"]["a"];
  ASSERT_NE(decodedFile.Find(inputFile), nullptr);
  EXPECT_TRUE(decodedFile.Find(inputFile)->SameData(*decodedText.Find(inputText)));
}

}  // namespace
}  // namespace quillix::tool
