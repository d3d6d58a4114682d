// `quillix eval` on bad request files: truncated, oversized, wrongly typed and nonsensical.
// Each must end in exactly one message line on standard error naming the file, nothing on
// standard output, and exit status 2; none may crash or hang the tool.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tools/tool_process.h"

namespace {

using quillix::test::RunTool;
using quillix::test::ToolRun;

class QuillixBadRequest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("quillix-bad-request-" + std::to_string(getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  // Writes `content` as a request file and evaluates it; checks the one-message contract.
  void expectRejected(const std::string& label, const std::string& content,
                      const std::string& expectedText = "") {
    SCOPED_TRACE(label);
    const auto request = dir_ / "request.json";
    {
      std::ofstream f(request, std::ios::binary | std::ios::trunc);
      f.write(content.data(), std::streamsize(content.size()));
    }
    const ToolRun run = RunTool({"eval", request.string()}, dir_);
    EXPECT_EQ(run.status, 2) << run.err;
    EXPECT_TRUE(run.out.empty()) << run.out.substr(0, 200);
    ASSERT_FALSE(run.err.empty());
    EXPECT_EQ(run.err.rfind("quillix: " + request.string() + ": ", 0), 0u) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << "more than one line: " << run.err;
    if (!expectedText.empty()) {
      EXPECT_NE(run.err.find(expectedText), std::string::npos) << run.err;
    }
  }

  std::filesystem::path dir_;
};

const std::string kDivi =
    R"({"requests": [{"node": "Quillix_divi", "port": 2010, "elements": 2, "inputs": {"1010": {"type": "int", "values": [7, 8]}}}]})";

TEST_F(QuillixBadRequest, TruncatedFilesAreInvalidJson) {
  // Every prefix of a valid request that cuts into its structure.
  for (std::size_t cut : {std::size_t(0), std::size_t(1), std::size_t(14), kDivi.size() / 2,
                          kDivi.size() - 3, kDivi.size() - 1})
    expectRejected("cut at " + std::to_string(cut), kDivi.substr(0, cut), "not valid JSON");
  expectRejected("cut inside a string", R"({"requests": [{"node": "Quillix_di)", "not valid JSON");
  expectRejected("cut inside an escape", R"({"requests": [{"node": "\u00)", "not valid JSON");
}

TEST_F(QuillixBadRequest, OversizedRequestsAreRefusedBeforeAnyEvaluation) {
  expectRejected("too many elements",
                 R"({"requests": [{"node": "Quillix_divi", "port": 2010, "elements": 33554432}]})",
                 "too many elements");
  expectRejected(
      "elements beyond 32 bits",
      R"({"requests": [{"node": "Quillix_divi", "port": 2010, "elements": 4294967296}]})",
      "number too large");
  expectRejected("port beyond 32 bits",
                 R"({"requests": [{"node": "Quillix_divi", "port": 99999999999}]})",
                 "number too large");
  expectRejected("number beyond a double",
                 R"({"requests": [{"node": "Quillix_divi", "port": 1E400}]})", "not valid JSON");
  expectRejected(
      "integer beyond 32 bits",
      R"({"requests": [{"node": "Quillix_divi", "port": 2010, "inputs": {"1010": {"type": "int", "values": [2147483648]}}}]})",
      "integer out of the 32-bit range");
  expectRejected(
      "float beyond the float range",
      R"({"requests": [{"node": "Quillix_nan", "port": 2010, "inputs": {"1010": {"type": "float", "values": [1e39]}}}]})",
      "out of the float range");
  expectRejected("threads beyond the limit",
                 R"({"requests": [{"node": "Quillix_divi", "port": 2010, "threads": 100000}]})",
                 "threads");
  // Deep nesting: a hundred thousand open lists, then a wrong value where a request belongs.
  expectRejected("deeply nested",
                 "{\"requests\": " + std::string(100000, '[') + std::string(100000, ']') + "}");
  // A large file with one wrong value at its very end.
  std::string big =
      R"({"requests": [{"node": "Quillix_divi", "port": 2010, "elements": 200000, "inputs": {"1010": {"type": "int", "values": [)";
  for (int i = 0; i < 199999; ++i) big += "1,";
  big += "\"x\"]}}}]}";
  expectRejected("large file, bad last value", big, "expected an integer");
}

TEST_F(QuillixBadRequest, WronglyTypedValuesNameTheirPlace) {
  const auto one = [](const std::string& request) { return R"({"requests": [)" + request + "]}"; };
  expectRejected("node not a string", one(R"({"node": 5, "port": 2010})"), "/requests/0/node");
  expectRejected("port negative", one(R"({"node": "Quillix_divi", "port": -1})"),
                 "/requests/0/port");
  expectRejected("port a string", one(R"({"node": "Quillix_divi", "port": "2010"})"),
                 "/requests/0/port");
  expectRejected("elements a string",
                 one(R"({"node": "Quillix_divi", "port": 2010, "elements": "3"})"), "elements");
  expectRejected(
      "values not a list",
      one(R"({"node": "Quillix_divi", "port": 2010, "inputs": {"1010": {"type": "int", "values": "abc"}}})"),
      "/requests/0/inputs/1010/values");
  expectRejected(
      "type the port refuses",
      one(R"({"node": "Quillix_divi", "port": 2010, "inputs": {"1010": {"type": "string", "values": ["a"]}}})"),
      "does not accept");
  expectRejected(
      "matrix of the wrong shape",
      one(R"({"node": "Quillix_cdbte", "port": 2010, "inputs": {"1010": {"type": "matrix44", "values": [[1, 2, 3]]}}})"));
  expectRejected(
      "fraction for an integer",
      one(R"({"node": "Quillix_divi", "port": 2010, "inputs": {"1010": {"type": "int", "values": [1.5]}}})"),
      "fraction");
  expectRejected("batch not ascending",
                 one(R"({"node": "Quillix_divi", "port": 2010, "elements": 3, "batch": [2, 1]})"),
                 "ascending");
  expectRejected(
      "too few values",
      one(R"({"node": "Quillix_divi", "port": 2010, "elements": 3, "inputs": {"1010": {"type": "int", "values": [1]}}})"),
      "expected 3 values");
  expectRejected(
      "float bits malformed",
      one(R"({"node": "Quillix_nan", "port": 2010, "inputs": {"1010": {"type": "float", "values": ["0xZZ"]}}})"));
  expectRejected("string of bytes beyond UTF-8",
                 "{\"requests\": [{\"node\": \"Quillix_\xff\xfe\", \"port\": 2010}]}",
                 "not valid JSON");
}

TEST_F(QuillixBadRequest, NonsensicalFilesAreRejected) {
  expectRejected("empty file", "", "not valid JSON");
  expectRejected("binary bytes",
                 std::string("\x7f"
                             "ELF\x02\x01\x01\0\0\0",
                             10),
                 "not valid JSON");
  expectRejected("a bare string", R"("hello")", "expected a list of requests");
  expectRejected("requests not a list", R"({"requests": {}})", "expected a list of requests");
  expectRejected("no requests key", R"({"request": []})",
                 "/request: unknown key; did you mean \"requests\"?");
  expectRejected("no requests at all", R"({})", "/: missing \"requests\"");
  expectRejected("a request that is a number", R"({"requests": [42]})",
                 "expected a request object");
  expectRejected("unknown node", R"({"requests": [{"node": "Quillix_nothing", "port": 2010}]})",
                 "unknown node");
  expectRejected(
      "unknown input port",
      R"({"requests": [{"node": "Quillix_divi", "port": 2010, "inputs": {"4242": {"type": "int", "values": [1]}}}]})",
      "/requests/0/inputs/4242: node Quillix_divi has no input port \"4242\"");
  expectRejected(
      "input port name misspelt",
      R"({"requests": [{"node": "Quillix_divi", "port": 2010, "inputs": {"divideBy": {"type": "int", "values": [1]}}}]})",
      "/requests/0/inputs/divideBy: node Quillix_divi has no input port \"divideBy\"; did you "
      "mean \"DivideBy\"?");
  expectRejected(
      "instance shared by two nodes",
      R"({"requests": [{"node": "Quillix_divi", "port": 2010, "instance": "a"}, {"node": "Quillix_nan", "port": 2010, "instance": "a"}]})",
      "belongs to another node");
  // A good request before a bad one: still nothing on standard output.
  expectRejected("good then bad",
                 R"({"requests": [{"node": "Quillix_divi", "port": 2010}, {"node": 1}]})",
                 "/requests/1/node");
}

TEST_F(QuillixBadRequest, MissingFileAndDirectoryAreOneMessage) {
  const ToolRun missing = RunTool({"eval", (dir_ / "absent.json").string()}, dir_);
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.err, "quillix: " + (dir_ / "absent.json").string() +
                             ": cannot open the request file: No such file or directory\n");
  const ToolRun directory = RunTool({"eval", dir_.string()}, dir_);
  EXPECT_EQ(directory.status, 2);
  EXPECT_EQ(directory.err, "quillix: " + dir_.string() + ": is a directory\n");
  EXPECT_TRUE(directory.out.empty());
}

}  // namespace
