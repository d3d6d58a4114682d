// The real `quillix` binary on every kind of user mistake: a misspelt subcommand, key, port or
// node, a directory or unreadable file, a bad line of --ndjson input and requests beyond the
// resource limits. Each must end with status 2 and exactly one line on standard error naming
// the place; none may crash or start evaluating.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tools/tool_process.h"

namespace {

using nlohmann::json;
using quillix::test::RunTool;
using quillix::test::ToolPipe;
using quillix::test::ToolRun;

class QuillixMistakes : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("quillix-mistakes-" + std::to_string(getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string WriteRequest(const std::string& content) {
    const auto path = dir_ / "request.json";
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
    return path.string();
  }

  // Runs `args` and checks the one-line contract; `expected` must be in that line.
  ToolRun ExpectOneLine(const std::vector<std::string>& args, const std::string& expected,
                        const std::string& input = "") {
    const ToolRun run = RunTool(args, dir_, input);
    EXPECT_EQ(run.status, 2) << run.err;
    EXPECT_FALSE(run.err.empty());
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << "not exactly one line: " << run.err;
    EXPECT_EQ(run.err.rfind("quillix: ", 0), 0u) << run.err;
    EXPECT_NE(run.err.find(expected), std::string::npos) << run.err;
    return run;
  }

  // A request file with one request `request`, evaluated; nothing may reach standard output.
  void ExpectRequestRefused(const std::string& request, const std::string& expected) {
    SCOPED_TRACE(request.substr(0, 120));
    const std::string file = WriteRequest(R"({"requests": [)" + request + "]}");
    const ToolRun run = ExpectOneLine({"eval", file}, file + ": " + expected);
    EXPECT_TRUE(run.out.empty()) << run.out.substr(0, 200);
  }

  std::filesystem::path dir_;
};

TEST_F(QuillixMistakes, MisspeltNamesSuggestTheNearest) {
  const ToolRun evl = ExpectOneLine({"evl", "x.json"}, "unknown command \"evl\"");
  EXPECT_EQ(evl.err, "quillix: unknown command \"evl\"; did you mean \"eval\"?\n");
  ExpectOneLine({"frobnicate"}, "unknown command \"frobnicate\" (list, eval, run, scene)");
  ExpectRequestRefused(R"({"node": "Quillix_divi", "port": 2010, "elemnts": 2})",
                       "/requests/0/elemnts: unknown key; did you mean \"elements\"?");
  ExpectRequestRefused(
      R"({"node": "Quillix_divi", "port": 2010, "inputs": {"1010": {"type": "int", "valeus": [1]}}})",
      "/requests/0/inputs/1010/valeus: unknown key; did you mean \"values\"?");
  ExpectRequestRefused(
      R"({"node": "Quillix_divi", "port": 2010, "inputs": {"Valeu": {"type": "int", "values": [1]}}})",
      "/requests/0/inputs/Valeu: node Quillix_divi has no input port \"Valeu\"; did you mean "
      "\"Value\"?");
  ExpectRequestRefused(R"({"node": "Quillix_divi", "port": ["Result", "Remaindr"]})",
                       "/requests/0/port/1: node Quillix_divi has no output port \"Remaindr\"; "
                       "did you mean \"Remainder\"?");
  ExpectRequestRefused(R"({"node": "Quillix_dvi", "port": 2010})",
                       "/requests/0/node: unknown node \"Quillix_dvi\"; did you mean "
                       "\"Quillix_divi\"?");
  ExpectRequestRefused(
      R"({"node": "Quillix_divi", "port": 2010, "inputs": {"1010": {"type": "nit", "values": [1]}}})",
      "/requests/0/inputs/1010/type: unknown data type \"nit\"; did you mean \"int\"?");
  ExpectRequestRefused(R"({"node": "Quillix_divi", "port": 2010, "context": "polygn"})",
                       "/requests/0/context: unknown context \"polygn\"; did you mean "
                       "\"polygon\"?");
  // A key with "/" and "~" is escaped in the place as a JSON Pointer writes it.
  ExpectRequestRefused(R"({"node": "Quillix_divi", "port": 2010, "a/b~c": 1})",
                       "/requests/0/a~1b~0c: unknown key");
  const std::string top = WriteRequest(R"({"request": []})");
  ExpectOneLine({"eval", top}, "/request: unknown key; did you mean \"requests\"?");
}

TEST_F(QuillixMistakes, FilesThatCannotBeReadAreNamed) {
  ExpectOneLine({"eval", dir_.string()}, dir_.string() + ": is a directory");
  ExpectOneLine({"eval", "--ndjson", dir_.string()}, dir_.string() + ": is a directory");
  const std::string request = WriteRequest(R"({"requests": []})");
  ExpectOneLine({"eval", request, "--scene", dir_.string()}, dir_.string() + ": is a directory");
  ExpectOneLine({"scene", dir_.string()}, dir_.string() + ": is a directory");
  // Opens, then fails to read even for root: the process's own memory at address 0.
  ExpectOneLine({"eval", "/proc/self/mem"}, "/proc/self/mem: cannot read the request file");
  if (geteuid() != 0) {
    chmod(request.c_str(), 0);
    ExpectOneLine({"eval", request}, request + ": cannot open the request file: Permission denied");
  }
}

TEST_F(QuillixMistakes, BadNdjsonLineIsAnsweredOnItsLineAndTheRunGoesOn) {
  const std::string good = R"({"requests": [{"node": "Quillix_divi", "port": 2010}]})";
  const ToolRun run =
      ExpectOneLine({"eval", "--ndjson"}, "<stdin>:2: /requests/0/nod: unknown key",
                    good + "\n" + R"({"requests": [{"nod": 1}]})" + "\n" + good + "\n");
  std::vector<json> lines;
  std::size_t at = 0;
  for (std::size_t end; (end = run.out.find('\n', at)) != std::string::npos; at = end + 1)
    lines.push_back(json::parse(run.out.substr(at, end - at)));
  ASSERT_EQ(lines.size(), 3u) << run.out;
  EXPECT_EQ(lines[0], lines[2]);
  EXPECT_EQ(lines[0]["results"][0]["node"], "Quillix_divi");
  EXPECT_EQ(lines[1]["line"], 2);
  EXPECT_EQ(lines[1]["error"].get<std::string>() + "\n", run.err);
}

TEST_F(QuillixMistakes, ResourceLimitsAreRefusedBeforeEvaluating) {
  ExpectRequestRefused(R"({"node": "Quillix_divi", "port": 2010, "elements": 2000000000})",
                       "/requests/0/elements: too many elements: 2000000000");
  // Within the element cap, but a thousand outputs of every element outgrow any memory.
  json ports = json::array();
  for (int i = 0; i < 1000; ++i) ports.push_back(2010);
  ExpectRequestRefused(
      R"({"node": "Quillix_divi", "elements": 16777216, "port": )" + ports.dump() + "}",
      "/requests/0/elements: too many elements: the results of 16777216");
  // A declared count beyond the values given.
  ExpectRequestRefused(
      R"({"node": "Quillix_divi", "port": 2010, "elements": 5, "inputs": {"Value": {"type": "int", "values": [1, 2]}}})",
      "/requests/0/inputs/Value/values: expected 5 values (one per element), got 2");
  // Resampling to two billion points would allocate tens of GiB: refused at the count's place.
  const std::string line =
      R"({"type": "vector3", "structure": "array", "values": [[[0,0,0],[1,0,0]]]})";
  ExpectRequestRefused(
      R"({"node": "Quillix_rlins", "port": 2010, "inputs": {"1010": )" + line +
          R"(, "pntBasicNumOutputPoints": {"type": "float", "values": [2000000000]}}})",
      "/requests/0/inputs/pntBasicNumOutputPoints: the resampled lines would have 2000000000 "
      "points");
  ExpectRequestRefused(R"({"node": "Quillix_rlins", "port": 2010, "inputs": {"1010": )" + line +
                           R"(, "1020": {"type": "float", "values": [-1e9]}}})",
                       "/requests/0/inputs/1020: the resampled lines would have");
  // 2^31 − 1 rounds to 2^31 as a float, beyond the node's array sizes: the node itself answers
  // its empty line, so the tool lets it.
  const std::string file =
      WriteRequest(R"({"requests": [{"node": "Quillix_rlins", "port": 2010, "inputs": {"1010": )" +
                   line + R"(, "1020": {"type": "float", "values": [2147483647]}}}]})");
  const ToolRun run = RunTool({"eval", file, "--compact"}, dir_);
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["results"][0]["outputs"][0]["values"], json::parse("[[]]"));
}

TEST_F(QuillixMistakes, NdjsonAnswersEachLineBeforeTheNextArrives) {
  ToolPipe tool({"eval", "--ndjson"});
  const json request = json::parse(
      R"({"requests": [{"node": "Quillix_divi", "port": "Result", "inputs": {"Value": {"type": "int", "values": [7]}, "DivideBy": {"type": "int", "values": [2]}}}]})");
  tool.Write(request.dump() + "\n");
  const std::string first = tool.ReadLine();  // standard input is still open
  ASSERT_FALSE(first.empty());
  EXPECT_EQ(json::parse(first)["results"][0]["outputs"][0]["values"], json::parse("[3]"));
  tool.Write(request.dump() + "\n");
  EXPECT_EQ(tool.ReadLine(), first);
  EXPECT_EQ(tool.Finish(), 0);
}

TEST_F(QuillixMistakes, ListNamesWhatTheNumbersMean) {
  const ToolRun text = RunTool({"list"}, dir_);
  ASSERT_EQ(text.status, 0) << text.err;
  EXPECT_NE(text.out.find("  Quillix_divi — "), std::string::npos);
  EXPECT_NE(text.out.find("(multi-threaded)"), std::string::npos);
  EXPECT_NE(text.out.find("(single-threaded)"), std::string::npos);
  EXPECT_NE(text.out.find("in  1010 Value \"Value\": int, any structure, any context, default 0"),
            std::string::npos)
      << text.out.substr(0, 2000);
  const ToolRun listing = RunTool({"list", "--json"}, dir_);
  ASSERT_EQ(listing.status, 0) << listing.err;
  const json j = json::parse(listing.out);
  ASSERT_EQ(j["nodes"].size(), 29u);
  for (const json& node : j["nodes"]) {
    SCOPED_TRACE(node["name"].get<std::string>());
    // Every node has its docs heading's text, and the numbers keep their place beside names.
    EXPECT_FALSE(node["summary"].get<std::string>().empty());
    EXPECT_TRUE(node["threadingModel"].is_number());
    EXPECT_EQ(node["threading"],
              node["threadingModel"] == 1 ? "single-threaded" : "multi-threaded");
    for (const json& port : node["inputs"]) {
      EXPECT_TRUE(port["structures"].is_number() && port["contexts"].is_number());
      EXPECT_FALSE(port["contextNames"].empty());
    }
  }
}

}  // namespace
