// The profile services against a small model of their rules, written
// separately over a vector of lines: random files (odd spacing and case,
// comments, empty values, repeated sections and entries, LF and CR LF, no
// final line end) take random writes and deletions. After each one the file
// must be byte for byte the model's, so that every line the write did not
// touch is as it was, and every read and list must agree with the model.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "platform/host.h"
#include "platform/profile.h"
#include "support/dos_world.h"

namespace {

using zutest::u;

const char* const kSections[] = {"Alpha", "beta", "Gamma Ray"};
const char* const kEntries[] = {"Driver", "port", "Server Name", "x"};
const char* const kValues[] = {"", "5432", "-12", "abc def", "a=b", "12abc", "[x]", "; not a comment", "+7"};

bool blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

std::string trim(const std::string& s) {
  std::size_t a = 0, b = s.size();
  while (a < b && blank(s[a])) ++a;
  while (b > a && blank(s[b - 1])) --b;
  return s.substr(a, b - a);
}

std::string lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

bool same(const std::string& a, const std::string& b) { return lower(a) == lower(b); }

struct ModelLine {
  std::string text, end;
  enum Kind { kBlank, kComment, kSection, kEntry, kOther } kind = kBlank;
  std::string name, value;
  std::size_t valueAt = 0;  // where a replaced value starts

  void classify() {
    std::size_t p = 0;
    while (p < text.size() && blank(text[p])) ++p;
    if (p == text.size()) {
      kind = kBlank;
    } else if (text[p] == ';' || text[p] == '#') {
      kind = kComment;
    } else if (text[p] == '[') {
      kind = kSection;
      name = trim(text.substr(p + 1, text.find(']', p) == std::string::npos ? std::string::npos
                                                                             : text.find(']', p) - p - 1));
    } else if (text.find('=') != std::string::npos) {
      kind = kEntry;
      const std::size_t eq = text.find('=');
      name = trim(text.substr(p, eq - p));
      value = trim(text.substr(eq + 1));
      valueAt = eq + 1;
      while (valueAt < text.size() && blank(text[valueAt])) ++valueAt;
    } else {
      kind = kOther;
    }
  }
};

// The file as lines, and the rules of reading and writing applied to them.
class Model {
 public:
  bool exists = false;
  std::vector<ModelLine> lines;

  void load(const std::string& bytes) {
    exists = true;
    lines.clear();
    for (std::size_t at = 0; at < bytes.size();) {
      const std::size_t lf = bytes.find('\n', at);
      ModelLine line;
      line.text = bytes.substr(at, lf == std::string::npos ? std::string::npos : lf - at);
      if (lf != std::string::npos) {
        line.end = "\n";
        if (!line.text.empty() && line.text.back() == '\r') {
          line.text.pop_back();
          line.end = "\r\n";
        }
      }
      add(lines.size(), line.text, line.end);
      at = lf == std::string::npos ? bytes.size() : lf + 1;
    }
  }
  std::string bytes() const {
    std::string all;
    for (const ModelLine& l : lines) all += l.text + l.end;
    return all;
  }

  // For each line, whether it stands under a heading of `section`.
  std::vector<bool> under(const std::string& section) const {
    std::vector<bool> in;
    bool now = false;
    for (const ModelLine& l : lines) {
      if (l.kind == ModelLine::kSection) now = same(l.name, section);
      in.push_back(now);
    }
    return in;
  }
  std::optional<std::size_t> find(const std::string& section, const std::string& entry) const {
    const std::vector<bool> in = under(section);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (in[i] && lines[i].kind == ModelLine::kEntry && same(lines[i].name, entry)) return i;
    }
    return std::nullopt;
  }
  std::vector<std::string> list(const std::string* section) const {
    const std::vector<bool> in = section != nullptr ? under(*section) : std::vector<bool>(lines.size());
    std::vector<std::string> names;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const ModelLine& l = lines[i];
      const bool wanted = section == nullptr ? l.kind == ModelLine::kSection : in[i] && l.kind == ModelLine::kEntry;
      if (!wanted || l.name.empty()) continue;
      bool seen = false;
      for (const std::string& n : names) seen |= same(n, l.name);
      if (!seen) names.push_back(l.name);
    }
    return names;
  }

  void set(std::string section, std::string entry, std::string value) {
    section = trim(section), entry = trim(entry), value = trim(value);
    const std::string nl = !lines.empty() && lines[0].end == "\r\n" ? "\r\n" : "\n";
    exists = true;
    if (auto i = find(section, entry)) {
      ModelLine& l = lines[*i];
      l.text = l.text.substr(0, l.valueAt) + value;
      l.classify();
      return;
    }
    const std::vector<bool> in = under(section);
    std::optional<std::size_t> after;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (lines[i].kind == ModelLine::kSection && after) break;
      if (in[i] && (lines[i].kind == ModelLine::kSection || (after && lines[i].kind == ModelLine::kEntry))) after = i;
    }
    if (after) {
      if (lines[*after].end.empty()) lines[*after].end = nl;
      add(*after + 1, entry + "=" + value, nl);
      return;
    }
    if (!lines.empty()) {
      if (lines.back().end.empty()) lines.back().end = nl;
      if (lines.back().kind != ModelLine::kBlank) add(lines.size(), "", nl);
    }
    add(lines.size(), "[" + section + "]", nl);
    add(lines.size(), entry + "=" + value, nl);
  }
  void remove(const std::string& section, const std::string* entry) {
    const std::vector<bool> in = under(trim(section));
    std::vector<ModelLine> kept;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const bool gone = entry == nullptr ? in[i]
                                         : in[i] && lines[i].kind == ModelLine::kEntry && same(lines[i].name, trim(*entry));
      if (!gone) kept.push_back(lines[i]);
    }
    lines = kept;
  }

 private:
  void add(std::size_t at, const std::string& text, const std::string& end) {
    ModelLine line;
    line.text = text;
    line.end = end;
    line.classify();
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), line);
  }
};

// The leading decimal number, as the services read it.
std::optional<std::int32_t> number(const std::string& value) {
  std::size_t p = value.empty() || (value[0] != '-' && value[0] != '+') ? 0 : 1;
  if (p >= value.size() || !std::isdigit(static_cast<unsigned char>(value[p]))) return std::nullopt;
  std::uint32_t n = 0;
  for (; p < value.size() && std::isdigit(static_cast<unsigned char>(value[p])); ++p) n = n * 10 + (value[p] - '0');
  return static_cast<std::int32_t>(value[0] == '-' ? 0u - n : n);
}

std::vector<std::string> splitList(const unsigned char* buffer) {
  std::vector<std::string> names;
  for (const char* at = reinterpret_cast<const char*>(buffer); *at != '\0'; at += std::strlen(at) + 1) {
    names.emplace_back(at);
  }
  return names;
}

class ProfileModel : public zutest::DosWorld {
 protected:
  std::mt19937 rng{20261124};
  unsigned in(unsigned n) { return static_cast<unsigned>(rng() % n); }

  std::string oddCase(const char* name) {
    std::string s = name;
    for (char& c : s) {
      if (in(3) == 0) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      if (in(3) == 0) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return s;
  }
  std::string spaces() { return std::string(in(3), in(2) != 0 ? ' ' : '\t'); }

  std::string randomFile() {
    const unsigned endings = in(3);  // LF, CR LF, or each line its own
    std::string bytes;
    const unsigned count = in(14);
    for (unsigned i = 0; i < count; ++i) {
      std::string line;
      switch (in(10)) {
        case 0:
        case 1:
          line = spaces() + "[" + spaces() + oddCase(kSections[in(3)]) + spaces() + "]" + (in(4) == 0 ? " ; note" : "");
          break;
        case 2:
        case 3:
        case 4:
        case 5:
          line = spaces() + oddCase(kEntries[in(4)]) + spaces() + "=" + spaces() + kValues[in(9)] + spaces();
          break;
        case 6:
          line = spaces() + (in(2) != 0 ? "; " : "#") + oddCase(kEntries[in(4)]) + "=commented";
          break;
        case 7:
          line = "just words";
          break;
        default:
          line = spaces();
      }
      const bool crlf = endings == 1 || (endings == 2 && in(2) != 0);
      bytes += line + (i + 1 == count && in(3) == 0 ? "" : crlf ? "\r\n" : "\n");
    }
    return bytes;
  }

  // Every read and list of the services, against the model.
  void expectReads(const Model& model) {
    unsigned char buffer[512];
    ASSERT_EQ(zu::platform::profileGetString(nullptr, nullptr, nullptr, buffer, sizeof buffer, u("C:\\P.INI")),
              [&] {
                std::uint32_t n = 0;
                for (const std::string& s : model.list(nullptr)) n += static_cast<std::uint32_t>(s.size() + 1);
                return n;
              }());
    ASSERT_EQ(splitList(buffer), model.list(nullptr));
    for (const char* section : kSections) {
      const std::string sec = oddCase(section);
      zu::platform::profileGetString(u(sec), nullptr, nullptr, buffer, sizeof buffer, u("C:\\P.INI"));
      ASSERT_EQ(splitList(buffer), model.list(&sec)) << sec;
      for (const char* entry : kEntries) {
        const std::string e = oddCase(entry);
        const auto at = model.find(sec, e);
        zu::platform::profileGetString(u(sec), u(e), u("(none)"), buffer, sizeof buffer, u("C:\\P.INI"));
        ASSERT_EQ(std::string(reinterpret_cast<char*>(buffer)), at ? model.lines[*at].value : "(none)") << sec << "/" << e;
        const std::optional<std::int32_t> n = at ? number(model.lines[*at].value) : std::nullopt;
        ASSERT_EQ(zu::platform::profileGetInt(u(sec), u(e), -99, u("C:\\P.INI")), n.value_or(-99)) << sec << "/" << e;
      }
    }
  }
};

TEST_F(ProfileModel, WritesTouchOnlyTheirLinesAndReadsFollowTheRules) {
  const char* const kRefused[][3] = {{"Alpha", "a=b", "v"}, {"x]y", "Driver", "v"}, {"Alpha", "Driver", "v\nw"},
                                     {"  ", "Driver", "v"}, {"Alpha", " ", "v"}, {"Alpha", "[x", "v"}};
  // Durability is not what is tested here, and a flush per write is slow.
  zu::platform::host.fsync = [](int) { return 0; };
  unsigned sets = 0, inserts = 0, sections = 0;
  for (int file = 0; file < 150; ++file) {
    SCOPED_TRACE("file " + std::to_string(file));
    Model model;
    std::remove(host("c/P.INI").c_str());
    if (in(6) != 0) {
      const std::string bytes = randomFile();
      writeHost("c/P.INI", bytes);
      model.load(bytes);
    }
    ASSERT_NO_FATAL_FAILURE(expectReads(model));
    for (int op = 0; op < 10; ++op) {
      const std::string section = (in(3) == 0 ? " " : "") + oddCase(kSections[in(3)]);
      const std::string entry = oddCase(kEntries[in(4)]) + (in(3) == 0 ? "\t" : "");
      const std::string value = (in(3) == 0 ? "  " : "") + std::string(kValues[in(9)]);
      const unsigned what = in(20);
      bool written;
      if (what < 12) {
        const bool had = model.find(trim(section), trim(entry)).has_value();
        const std::vector<bool> under = model.under(trim(section));
        const bool heading = std::find(under.begin(), under.end(), true) != under.end();
        written = zu::platform::profileWriteString(u(section), u(entry), u(value), u("C:\\P.INI"));
        model.set(section, entry, value);
        sets += had ? 1 : 0;
        inserts += !had && heading ? 1 : 0;
        sections += !had && !heading ? 1 : 0;
      } else if (what < 17) {
        written = zu::platform::profileWriteString(u(section), u(entry), nullptr, u("C:\\P.INI"));
        model.remove(section, &entry);
      } else if (what < 19) {
        written = zu::platform::profileWriteString(u(section), nullptr, nullptr, u("C:\\P.INI"));
        model.remove(section, nullptr);
      } else {
        const auto& r = kRefused[in(6)];
        written = !zu::platform::profileWriteString(u(r[0]), u(r[1]), u(r[2]), u("C:\\P.INI"));
      }
      ASSERT_TRUE(written) << "op " << op;
      ASSERT_EQ(hostExists("c/P.INI"), model.exists) << "op " << op;
      if (model.exists) {
        ASSERT_EQ(readHost("c/P.INI"), model.bytes()) << "op " << op;
      }
      ASSERT_NO_FATAL_FAILURE(expectReads(model)) << "op " << op;
    }
    ASSERT_EQ(hostNames("c").size(), model.exists ? 2u : 1u) << "a file left beside the profile";
  }
  zu::platform::host.fsync = zu::platform::kDefaultHost.fsync;
  // Each way of setting was taken many times.
  EXPECT_GT(sets, 100u);
  EXPECT_GT(inserts, 50u);
  EXPECT_GT(sections, 50u);
}

}  // namespace
