#include "tools/quillix/request_reader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "tools/quillix/json_values.h"

namespace quillix::tool {

using nlohmann::json;
using XSI::ULONG;
using xsihost::PortValues;

xsihost::PortValues* DecodedValues::Find(const json& input) {
  const auto it = byInput_.find(&input);
  return it == byInput_.end() ? nullptr : &it->second;
}

void DecodedValues::Add(const json& input, PortValues values) {
  byInput_[&input] = std::move(values);
}

namespace {

// The document's text: held in memory, or read from a file a block at a time.
class TextBlocks {
 public:
  explicit TextBlocks(std::string_view text)
      : next_(text.data()), end_(text.data() + text.size()) {}
  explicit TextBlocks(int fd) : fd_(fd), block_(kBlockSize) {
    struct stat info {};
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode))
      unread_ = static_cast<std::size_t>(info.st_size);
    next_ = end_ = block_.data();
  }

  // The next byte, not taken; -1 at the end (a read error ends the text too: the plain reader
  // that follows reports it).
  int Peek() { return next_ != end_ || Refill() ? static_cast<unsigned char>(*next_) : -1; }
  void Skip() { ++next_; }
  // Takes white space, and returns the byte after it, not taken.
  int PeekToken() {
    for (;;) {
      const int c = Peek();
      if (c != ' ' && c != '\n' && c != '\r' && c != '\t') return c;
      ++next_;
    }
  }
  // Takes `c`, after white space; false when something else comes.
  bool Take(char c) {
    if (PeekToken() != static_cast<unsigned char>(c)) return false;
    ++next_;
    return true;
  }
  // How many bytes are still to come (those of a file's blocks not read yet included).
  std::size_t Remaining() const { return static_cast<std::size_t>(end_ - next_) + unread_; }

  // The bytes at hand from the next one on: at least `n` of them unless the text ends sooner
  // (`n` at most a block).
  std::string_view Ahead(std::size_t n) {
    if (static_cast<std::size_t>(end_ - next_) < n && fd_ >= 0) {
      const std::size_t kept = static_cast<std::size_t>(end_ - next_);
      std::memmove(block_.data(), next_, kept);
      next_ = block_.data();
      end_ = next_ + kept;
      while (static_cast<std::size_t>(end_ - next_) < n) {
        const std::size_t used = static_cast<std::size_t>(end_ - next_);
        const ssize_t got = ::read(fd_, block_.data() + used, block_.size() - used);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        end_ += got;
        unread_ -= std::min(unread_, static_cast<std::size_t>(got));
      }
    }
    return std::string_view(next_, static_cast<std::size_t>(end_ - next_));
  }
  void Skip(std::size_t n) { next_ += n; }

 private:
  static constexpr std::size_t kBlockSize = std::size_t(1) << 18;

  bool Refill() {
    if (fd_ < 0) return false;
    for (;;) {
      const ssize_t got = ::read(fd_, block_.data(), block_.size());
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) return false;
      next_ = block_.data();
      end_ = next_ + got;
      unread_ -= std::min(unread_, static_cast<std::size_t>(got));
      return true;
    }
  }

  int fd_ = -1;
  std::vector<char> block_;
  const char* next_;
  const char* end_;
  std::size_t unread_ = 0;
};

bool IsDigit(int c) { return c >= '0' && c <= '9'; }

// One number as written, in the reader's block: valid until the next byte is taken.
struct NumberText {
  const char* first;
  const char* last;
  bool integral;  // no fraction, no exponent: the plain reader holds it as an integer
};

// Takes a number by JSON's grammar: -?(0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)? Numbers
// longer than any request needs are left to the plain reader.
bool TakeNumber(TextBlocks& in, NumberText& n) {
  constexpr std::size_t kLongest = 64;
  in.PeekToken();
  const std::string_view ahead = in.Ahead(kLongest + 1);
  const char* const first = ahead.data();
  const char* const end = first + std::min(ahead.size(), kLongest + 1);
  const char* at = first;
  auto digits = [&] {
    const char* from = at;
    while (at < end && IsDigit(*at)) ++at;
    return at != from;
  };
  if (at < end && *at == '-') ++at;
  if (at < end && *at == '0')
    ++at;
  else if (!digits())
    return false;
  n.integral = true;
  if (at < end && *at == '.') {
    n.integral = false;
    ++at;
    if (!digits()) return false;
  }
  if (at < end && (*at == 'e' || *at == 'E')) {
    n.integral = false;
    ++at;
    if (at < end && (*at == '+' || *at == '-')) ++at;
    if (!digits()) return false;
  }
  if (static_cast<std::size_t>(at - first) > kLongest) return false;
  n.first = first;
  n.last = at;
  in.Skip(static_cast<std::size_t>(at - first));
  return true;
}

// The number as a double, as the plain reader gets it: written as an integer, it is held as a
// 64-bit integer and widened (so "-0" is +0); otherwise, or beyond 64 bits, it is the nearest
// double. Numbers beyond a double, and those that underflow, are left to the plain reader.
bool NumberValue(const NumberText& n, double& value) {
  const char* first = n.first;
  const char* last = n.last;
  if (n.integral) {
    if (*first == '-') {
      std::int64_t v;
      if (std::from_chars(first, last, v).ec == std::errc()) {
        value = static_cast<double>(v);
        return true;
      }
    } else {
      std::uint64_t v;
      if (std::from_chars(first, last, v).ec == std::errc()) {
        value = static_cast<double>(v);
        return true;
      }
    }
  }
  const std::from_chars_result r = std::from_chars(first, last, value);
  return r.ec == std::errc() && r.ptr == last && std::isfinite(value);
}

// Decodes one input's "values" list into port data of `type`, single or arrays per item,
// taking exactly what the plain reader (json_values.cpp) takes and giving the same bytes.
class ValuesDecoder {
 public:
  ValuesDecoder(TextBlocks& in, ULONG type) : in_(in), type_(type) {}

  bool Decode(bool array, PortValues& out) {
    out.type = type_;
    out.array = array;
    std::size_t items = 0;
    if (!array) out.flat.reserve(ReserveBytes());
    const bool ok = List([&] {
      ++items;
      if (!array) return Value(out.flat);
      // Most large lists are the one array of a single element.
      std::vector<std::byte> item;
      if (items == 1) item.reserve(ReserveBytes());
      if (!List([&] { return Value(item); })) return false;
      out.arrays.push_back(std::move(item));
      return true;
    });
    if (!ok || items > std::numeric_limits<ULONG>::max()) return false;
    out.count = static_cast<ULONG>(items);
    return true;
  }

 private:
  // Room for the rest of the text's worth of values at their shortest (a digit and a comma a
  // number, brackets around a vector): reserved, not touched, so it costs address space only,
  // and the buffer never moves while it fills.
  std::size_t ReserveBytes() const {
    const std::size_t size = xsihost::ValueSize(type_);
    const std::size_t numbers = std::max<std::size_t>(1, size / sizeof(float));
    const std::size_t shortest = numbers == 1 ? 2 : 2 * numbers + 2;
    const std::size_t limit = std::size_t(1) << 30;
    return std::min(limit, in_.Remaining() / shortest * size);
  }

  // "[" item ("," item)* "]", or "[]".
  template <class Item>
  bool List(Item item) {
    if (!in_.Take('[')) return false;
    if (in_.PeekToken() == ']') {
      in_.Skip();
      return true;
    }
    do {
      if (!item()) return false;
    } while (in_.Take(','));
    return in_.Take(']');
  }

  template <class T>
  static void Append(std::vector<std::byte>& out, const T& value) {
    const auto* b = reinterpret_cast<const std::byte*>(&value);
    out.insert(out.end(), b, b + sizeof value);
  }

  bool Float(std::vector<std::byte>& out) {
    NumberText n;
    double d;
    if (!TakeNumber(in_, n) || !NumberValue(n, d)) return false;
    if (std::fabs(d) > double(std::numeric_limits<float>::max())) return false;
    Append(out, static_cast<float>(d));
    return true;
  }

  bool Int(std::vector<std::byte>& out) {
    NumberText n;
    std::int32_t v;
    if (!TakeNumber(in_, n) || !n.integral) return false;
    const std::from_chars_result r = std::from_chars(n.first, n.last, v);
    if (r.ec != std::errc() || r.ptr != n.last) return false;
    // "-0" is an integer 0 to the plain reader, as it is here.
    Append(out, static_cast<XSI::LONG>(v));
    return true;
  }

  bool Literal(const char* word) {
    if (in_.PeekToken() != static_cast<unsigned char>(*word)) return false;
    for (; *word; ++word) {
      if (in_.Peek() != static_cast<unsigned char>(*word)) return false;
      in_.Skip();
    }
    return true;
  }

  bool Bool(std::vector<std::byte>& out) {
    const int c = in_.PeekToken();
    if (c != 't' && c != 'f') return false;
    const bool b = c == 't';
    if (!Literal(b ? "true" : "false")) return false;
    Append(out, b);
    return true;
  }

  // A fixed number of floats in a list, or for matrices optionally a list of rows.
  bool Floats(std::vector<std::byte>& out) {
    const std::size_t count = xsihost::ValueSize(type_) / sizeof(float);
    const std::size_t rows = MatrixRows(type_);
    auto exactly = [&](std::size_t n, auto element) {
      if (!in_.Take('[')) return false;
      for (std::size_t i = 0; i < n; ++i)
        if ((i > 0 && !in_.Take(',')) || !element()) return false;
      return in_.Take(']');
    };
    auto number = [&] { return Float(out); };
    if (rows > 1) {
      // Peek past the outer bracket: rows when a list comes first.
      if (!in_.Take('[')) return false;
      const bool asRows = in_.PeekToken() == '[';
      auto rest = [&](std::size_t n, auto element) {
        for (std::size_t i = 0; i < n; ++i)
          if ((i > 0 && !in_.Take(',')) || !element()) return false;
        return in_.Take(']');
      };
      if (asRows) return rest(rows, [&] { return exactly(count / rows, number); });
      return rest(count, number);
    }
    return exactly(count, number);
  }

  bool Value(std::vector<std::byte>& out) {
    switch (type_) {
      case XSI::siICENodeDataBool:
        return Bool(out);
      case XSI::siICENodeDataLong:
        return Int(out);
      case XSI::siICENodeDataFloat:
        return Float(out);
      case XSI::siICENodeDataShape:
        if (!in_.Take('[') || !Int(out)) return false;
        for (int k = 0; k < 3; ++k)
          if (!in_.Take(',') || !Float(out)) return false;
        return in_.Take(']');
      default:
        return Floats(out);
    }
  }

  TextBlocks& in_;
  ULONG type_;
};

// What a container of the document is, as far as finding input values goes.
enum class Role : std::uint8_t {
  kOther,
  kDocument,      // {"requests": [...], "scene": ...}
  kRequestList,   // the requests
  kRequest,       // one request
  kInputs,        // "inputs", or one entry of "instances"
  kInstanceList,  // "instances"
  kInput,         // one input
};

struct Frame {
  Role role = Role::kOther;
  bool object = false;
  bool expectKey = false;         // objects: after "{" or ","
  std::size_t index = 0;          // lists: the element being read
  std::string key;                // objects: the key of the member being read
  std::vector<std::string> keys;  // keys read so far, where a repeat matters
  std::size_t request = 0;        // the request this container is in
  std::optional<std::size_t> instance;
  // Inputs: what the keys before "values" said.
  ULONG type = 0;
  std::optional<bool> array;
  bool bad = false;  // "type" or "structure" that is not one the decoder follows
  bool from = false;
  bool decoded = false;
};

struct Pending {
  std::size_t request;
  std::optional<std::size_t> instance;
  std::string input;
  PortValues values;
};

// Copies the document into `skeleton` with each decodable "values" list written as null and
// decoded into `pending`.
class Splitter {
 public:
  Splitter(TextBlocks& in, std::string& skeleton, std::vector<Pending>& pending)
      : in_(in), skeleton_(skeleton), pending_(pending) {}

  bool Run() {
    for (;;) {
      const int c = in_.Peek();
      if (c < 0) return stack_.empty();
      if (c == ' ' || c == '\n' || c == '\r' || c == '\t') {
        Copy(c);
        continue;
      }
      Frame* top = stack_.empty() ? nullptr : &stack_.back();
      if (c == '}' || c == ']') {
        if (!top || top->object != (c == '}')) return false;
        Copy(c);
        stack_.pop_back();
        continue;
      }
      if (c == ',' && top) {
        Copy(c);
        if (top->object)
          top->expectKey = true;
        else
          ++top->index;
        continue;
      }
      if (top && top->object && top->expectKey) {
        if (c != '"' || !Key(*top)) return false;
        continue;
      }
      if (!ValueOf(top, c)) return false;
    }
  }

  bool RootIsObject() const { return rootIsObject_; }

 private:
  void Copy(int c) {
    skeleton_.push_back(static_cast<char>(c));
    in_.Skip();
  }

  // A string, copied as written; `raw` gets its text between the quotes, `escaped` whether it
  // holds an escape (its text then differs from what it stands for).
  bool String(std::string& raw, bool& escaped) {
    raw.clear();
    escaped = false;
    Copy('"');
    for (;;) {
      const int c = in_.Peek();
      if (c < 0) return false;
      Copy(c);
      if (c == '"') return true;
      if (c == '\\') {
        escaped = true;
        const int e = in_.Peek();
        if (e < 0) return false;
        Copy(e);
        continue;
      }
      raw.push_back(static_cast<char>(c));
    }
  }

  bool Key(Frame& top) {
    bool escaped;
    if (!String(top.key, escaped)) return false;
    if (top.role != Role::kOther) {
      // Keys of the containers followed here are read as written: an escape or a repeat
      // could make the parsed document differ from what was followed.
      if (escaped || std::find(top.keys.begin(), top.keys.end(), top.key) != top.keys.end())
        return false;
      top.keys.push_back(top.key);
      if (top.role == Role::kInput && top.decoded && (top.key == "structure" || top.key == "from"))
        return false;
      if (top.role == Role::kInput && top.key == "from") top.from = true;
    }
    while (in_.Peek() == ' ' || in_.Peek() == '\n' || in_.Peek() == '\r' || in_.Peek() == '\t')
      Copy(in_.Peek());
    if (in_.Peek() != ':') return false;
    Copy(':');
    top.expectKey = false;
    return true;
  }

  Role RoleOf(const Frame* parent, bool object) const {
    if (!parent) return object ? Role::kDocument : Role::kRequestList;
    switch (parent->role) {
      case Role::kDocument:
        return !object && parent->key == "requests" ? Role::kRequestList : Role::kOther;
      case Role::kRequestList:
        return object ? Role::kRequest : Role::kOther;
      case Role::kRequest:
        if (object && parent->key == "inputs") return Role::kInputs;
        return !object && parent->key == "instances" ? Role::kInstanceList : Role::kOther;
      case Role::kInstanceList:
        return object ? Role::kInputs : Role::kOther;
      case Role::kInputs:
        return object ? Role::kInput : Role::kOther;
      default:
        return Role::kOther;
    }
  }

  // A value in `top` (or the document itself) that starts with `c`.
  bool ValueOf(Frame* top, int c) {
    if (c == '{' || c == '[') {
      const bool object = c == '{';
      if (top && top->role == Role::kInput && !object && top->key == "values" && Decodable(*top))
        return DecodeValues(*top);
      Frame frame;
      frame.role = RoleOf(top, object);
      frame.object = object;
      frame.expectKey = object;
      if (!top) rootIsObject_ = object;
      if (top) {
        frame.request = top->role == Role::kRequestList ? top->index : top->request;
        frame.instance = top->role == Role::kInstanceList ? top->index : top->instance;
      }
      Copy(c);
      stack_.push_back(std::move(frame));
      return true;
    }
    if (c == '"') {
      std::string text;
      bool escaped;
      if (!String(text, escaped)) return false;
      if (top && top->role == Role::kInput) Note(*top, text, escaped);
      return true;
    }
    // A number or a literal: copied as written, the parser judges it.
    auto ends = [](int k) { return k <= 0 || std::strchr(",]}: \n\r\t\"[{", k) != nullptr; };
    if (ends(c)) return false;
    for (int k = c; !ends(k); k = in_.Peek()) Copy(k);
    if (top && top->role == Role::kInput && (top->key == "type" || top->key == "structure"))
      top->bad = true;
    return true;
  }

  // "type" and "structure" of an input, as far as they tell how to decode its values.
  static void Note(Frame& input, const std::string& text, bool escaped) {
    if (input.key == "type") {
      input.type = escaped ? 0 : xsihost::TypeFromName(text);
      if (input.type == 0 || input.type == XSI::siICENodeDataString) input.bad = true;
    } else if (input.key == "structure") {
      if (!escaped && (text == "single" || text == "array"))
        input.array = text == "array";
      else
        input.bad = true;
    }
  }

  static bool Decodable(const Frame& input) { return input.type != 0 && !input.bad && !input.from; }

  bool DecodeValues(Frame& input) {
    const Frame& inputs = stack_[stack_.size() - 2];
    Pending p{input.request, input.instance, inputs.key, {}};
    if (!ValuesDecoder(in_, input.type).Decode(input.array.value_or(false), p.values)) return false;
    pending_.push_back(std::move(p));
    skeleton_ += "null";
    input.decoded = true;
    return true;
  }

  TextBlocks& in_;
  std::string& skeleton_;
  std::vector<Pending>& pending_;
  std::vector<Frame> stack_;
  bool rootIsObject_ = false;
};

// The input object a pending list belongs to, in the parsed document; null when the document
// is not shaped as the splitter followed it.
const json* InputObject(const json& document, bool rootIsObject, const Pending& p) {
  const json* requests = &document;
  if (rootIsObject) {
    const auto it = document.find("requests");
    if (it == document.end()) return nullptr;
    requests = &*it;
  }
  if (!requests->is_array() || p.request >= requests->size()) return nullptr;
  const json& request = (*requests)[p.request];
  const json* inputs = nullptr;
  if (p.instance) {
    const auto it = request.find("instances");
    if (it == request.end() || !it->is_array() || *p.instance >= it->size()) return nullptr;
    inputs = &(*it)[*p.instance];
  } else {
    const auto it = request.find("inputs");
    if (it == request.end()) return nullptr;
    inputs = &*it;
  }
  const auto input = inputs->find(p.input);
  if (input == inputs->end() || !input->is_object()) return nullptr;
  const auto values = input->find("values");
  return values != input->end() && values->is_null() ? &*input : nullptr;
}

bool Read(TextBlocks& in, json& document, DecodedValues& decoded) {
  std::string skeleton;
  std::vector<Pending> pending;
  Splitter splitter(in, skeleton, pending);
  try {
    if (!splitter.Run()) return false;
    document = json::parse(skeleton);
  } catch (const std::exception&) {
    // Not JSON, or no memory for the values: the plain reader says which.
    return false;
  }
  for (Pending& p : pending) {
    const json* input = InputObject(document, splitter.RootIsObject(), p);
    if (!input) return false;
    decoded.Add(*input, std::move(p.values));
  }
  return true;
}

}  // namespace

bool ReadRequestDocument(int fd, json& document, DecodedValues& decoded) {
  TextBlocks in(fd);
  return Read(in, document, decoded);
}

bool ReadRequestDocument(std::string_view text, json& document, DecodedValues& decoded) {
  TextBlocks in(text);
  return Read(in, document, decoded);
}

}  // namespace quillix::tool
