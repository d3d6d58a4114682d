// The table in docs/architecture.md that maps every registered name to its binding, core
// header, test and docs section stays true: same names as the catalogue, files that exist,
// bindings that define the node's registration, tests named after their binding, and docs
// with a section headed by the name.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path kRoot = QUILLIX_SOURCE_DIR;

std::string ReadText(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

struct Row {
  std::string name;  // "Quillix_divi" or "Quillix__FindMatchingObjects"
  std::string binding, core, test, docs;
};

std::string Unquote(std::string cell) {
  const auto first = cell.find_first_not_of(" `");
  const auto last = cell.find_last_not_of(" `");
  return first == std::string::npos ? std::string() : cell.substr(first, last - first + 1);
}

std::vector<Row> TableRows() {
  std::vector<Row> rows;
  std::istringstream lines(ReadText(kRoot / "docs/architecture.md"));
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("| `Quillix_", 0) != 0) continue;
    std::vector<std::string> cells;
    std::istringstream split(line.substr(1));
    for (std::string cell; std::getline(split, cell, '|');) cells.push_back(Unquote(cell));
    if (cells.size() < 5) continue;
    rows.push_back({cells[0], cells[1], cells[2], cells[3], cells[4]});
  }
  return rows;
}

std::set<std::string> CatalogueNodes() {
  std::set<std::string> names;
  const std::string text = ReadText(kRoot / "plugin/catalogue.inc");
  const std::regex entry(R"(QUILLIX_NODE\((\w+)\))");
  for (auto it = std::sregex_iterator(text.begin(), text.end(), entry);
       it != std::sregex_iterator(); ++it)
    names.insert("Quillix_" + (*it)[1].str());
  return names;
}

TEST(ArchitectureTable, NamesEveryCatalogueNodeAndBothCommandsOnce) {
  std::multiset<std::string> tableNames;
  for (const Row& row : TableRows()) tableNames.insert(row.name);
  std::multiset<std::string> expected;
  for (const std::string& name : CatalogueNodes()) expected.insert(name);
  expected.insert("Quillix__FindMatchingObjects");
  expected.insert("Quillix__OpenMostRecentScene");
  EXPECT_EQ(tableNames, expected);
}

TEST(ArchitectureTable, EveryRowPointsAtFilesThatSayWhatTheRowSays) {
  for (const Row& row : TableRows()) {
    SCOPED_TRACE(row.name);
    const bool command = row.name.rfind("Quillix__", 0) == 0;
    for (const std::string& file : {row.binding, row.core, row.test}) {
      EXPECT_TRUE(fs::is_regular_file(kRoot / file)) << file;
    }
    // A node's binding is found by listing one folder: its file name starts with the short name.
    const std::string shortName = row.name.substr(command ? 9 : 8);
    const std::string stem = fs::path(row.binding).stem().string();
    if (!command) {
      EXPECT_EQ(stem.rfind(shortName, 0), 0u) << row.binding;
    }
    const std::string binding = ReadText(kRoot / row.binding);
    // The callback is written out, or defined by a macro named after the node
    // (QUILLIX_REGISTER_NODE(tbit, ...), QUILLIX_LIST_TEXT_NODE(btoa, ...)).
    const std::string callback = command ? row.name + "_Execute" : row.name + "_Register";
    const bool byMacro =
        !command &&
        std::regex_search(binding, std::regex("\\bQUILLIX_\\w+_NODE\\(" + shortName + ","));
    EXPECT_TRUE(binding.find(callback) != std::string::npos || byMacro) << row.binding;
    // Tests mirror the tree and carry the binding's name.
    EXPECT_EQ(row.test,
              "tests/" + fs::path(row.binding).parent_path().string() + "/" + stem + "_test.cpp");
    // The docs cell links "<file>.md#<anchor>" beside this page; the file has a section
    // headed by the name.
    const auto open = row.docs.find('(');
    ASSERT_NE(open, std::string::npos) << row.docs;
    const std::string docsFile = row.docs.substr(open + 1, row.docs.find('#') - open - 1);
    const std::string docs = ReadText(kRoot / "docs" / docsFile);
    EXPECT_NE(docs.find("\n## " + row.name + " "), std::string::npos) << row.docs;
    EXPECT_TRUE(row.core.rfind("core/", 0) == 0 || row.core.rfind("kernel/", 0) == 0) << row.core;
  }
}

}  // namespace
