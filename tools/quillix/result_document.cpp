#include "tools/quillix/result_document.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <sstream>

#include "tools/quillix/json_values.h"

namespace quillix::tool {

using nlohmann::json;
using XSI::ULONG;
using xsihost::PortValues;

void AppendFloatText(float f, std::string& out) {
  char text[32];
  if (!std::isfinite(f)) {
    std::snprintf(text, sizeof text, "\"0x%08X\"", std::bit_cast<std::uint32_t>(f));
    out += text;
    return;
  }
  char* end = std::to_chars(text, text + sizeof text, f).ptr;
  double back = 0;
  std::from_chars(text, end, back);
  // The shortest text of a float may lie so near the edge of the float's interval that its
  // double rounds across it; nine digits never do.
  if (static_cast<float>(back) != f)
    end = std::to_chars(text, text + sizeof text, double(f), std::chars_format::general, 9).ptr;
  out.append(text, end);
  if (std::find_if(text, end, [](char c) { return c == '.' || c == 'e'; }) == end) out += ".0";
}

namespace {

// Writes JSON text as nlohmann::json::dump does, into a buffer passed on to the stream in
// blocks of kFlushBytes.
class TextWriter {
 public:
  TextWriter(std::ostream& out, int indent, bool replaceInvalidUtf8)
      : out_(out),
        indent_(indent),
        errors_(replaceInvalidUtf8 ? json::error_handler_t::replace
                                   : json::error_handler_t::strict) {}
  ~TextWriter() { out_.write(text_.data(), std::streamsize(text_.size())); }

  void Tree(const json& j, int level, const std::vector<PortValues>& held) {
    if (j.is_binary()) {
      Values(held[j.get_binary().subtype()], level, true);
    } else if (j.is_object()) {
      if (j.empty()) {
        text_ += "{}";
        return;
      }
      text_ += '{';
      bool first = true;
      for (const auto& [key, value] : j.items()) {
        if (!first) text_ += ',';
        first = false;
        Newline(level + 1);
        Scalar(json(key));
        text_ += indent_ >= 0 ? ": " : ":";
        Tree(value, level + 1, held);
      }
      Newline(level);
      text_ += '}';
    } else if (j.is_array()) {
      List(j.size(), level, [&](std::size_t k, int at) { Tree(j[k], at, held); });
    } else {
      Scalar(j);
    }
  }

  // One entry per item of `values`: null where an output item was not written.
  void Values(const PortValues& values, int level, bool outputsOnly) {
    const std::size_t size = xsihost::ValueSize(values.type);
    List(values.count, level, [&](std::size_t i, int at) {
      if (outputsOnly && !values.WasWritten(static_cast<ULONG>(i))) {
        text_ += "null";
      } else if (values.IsString()) {
        if (!values.array) return Scalar(json(WideToUtf8(values.strings[i])));
        const auto& strings = values.stringArrays[i];
        List(strings.size(), at, [&](std::size_t k, int) { Scalar(json(WideToUtf8(strings[k]))); });
      } else if (values.array) {
        const auto& bytes = values.arrays[i];
        List(bytes.size() / size, at,
             [&](std::size_t k, int inner) { Value(bytes.data() + k * size, values.type, inner); });
      } else {
        Value(values.flat.data() + i * size, values.type, at);
      }
    });
  }

 private:
  static constexpr std::size_t kFlushBytes = std::size_t(1) << 16;

  void Flush() {
    out_.write(text_.data(), std::streamsize(text_.size()));
    text_.clear();
  }

  void Newline(int level) {
    if (indent_ < 0) return;
    text_ += '\n';
    text_.append(std::size_t(level) * std::size_t(indent_), ' ');
  }

  void Scalar(const json& j) { text_ += j.dump(-1, ' ', false, errors_); }

  // "[" items "]", each item written by `item(index, level)`; "[]" when empty.
  template <class Item>
  void List(std::size_t count, int level, Item item) {
    if (count == 0) {
      text_ += "[]";
      return;
    }
    text_ += '[';
    for (std::size_t k = 0; k < count; ++k) {
      if (k > 0) text_ += ',';
      Newline(level + 1);
      item(k, level + 1);
      if (text_.size() >= kFlushBytes) Flush();
    }
    Newline(level);
    text_ += ']';
  }

  void Int(std::int32_t v) {
    char text[16];
    text_.append(text, std::to_chars(text, text + sizeof text, v).ptr);
  }

  template <class T>
  static T Load(const std::byte* data) {
    T value;
    std::memcpy(&value, data, sizeof value);
    return value;
  }

  // One value of `type`: vectors as lists, matrices as lists of rows, shapes as
  // [type, p0, p1, p2].
  void Value(const std::byte* data, ULONG type, int level) {
    switch (type) {
      case XSI::siICENodeDataBool:
        text_ += Load<bool>(data) ? "true" : "false";
        return;
      case XSI::siICENodeDataLong:
        return Int(Load<std::int32_t>(data));
      case XSI::siICENodeDataFloat:
        return AppendFloatText(Load<float>(data), text_);
      case XSI::siICENodeDataShape:
        return List(4, level, [&](std::size_t k, int) {
          if (k == 0) return Int(Load<std::int32_t>(data));
          AppendFloatText(Load<float>(data + k * sizeof(float)), text_);
        });
      default:
        break;
    }
    const std::size_t count = xsihost::ValueSize(type) / sizeof(float);
    const std::size_t rows = MatrixRows(type);
    const std::size_t columns = count / rows;
    auto row = [&](std::size_t r, int at) {
      List(columns, at, [&](std::size_t c, int) {
        AppendFloatText(Load<float>(data + (r * columns + c) * sizeof(float)), text_);
      });
    };
    if (rows == 1) return row(0, level);
    List(rows, level, row);
  }

  std::ostream& out_;
  int indent_;
  json::error_handler_t errors_;
  std::string text_;
};

}  // namespace

json ResultDocument::Hold(PortValues values) {
  held_.push_back(std::move(values));
  return json::binary({}, held_.size() - 1);
}

json ResultDocument::Inline(const json& subtree) const {
  if (subtree.is_binary()) return WritePortValues(held_[subtree.get_binary().subtype()], true);
  json copy = subtree;
  if (subtree.is_structured())
    for (auto& [key, value] : copy.items()) value = Inline(value);
  return copy;
}

void ResultDocument::Write(std::ostream& out, int indent, bool replaceInvalidUtf8) const {
  TextWriter(out, indent, replaceInvalidUtf8).Tree(tree, 0, held_);
}

json WritePortValues(const PortValues& values, bool outputsOnly) {
  // Written as text and read back, so that a value reads the same wherever it is printed.
  std::ostringstream text;
  TextWriter(text, -1, true).Values(values, 0, outputsOnly);
  return json::parse(text.str());
}

}  // namespace quillix::tool
