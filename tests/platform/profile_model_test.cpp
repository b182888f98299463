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
#include <utility>
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

bool same(std::string a, std::string b) {
  for (std::string* s : {&a, &b}) {
    for (char& c : *s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return a == b;
}

struct ModelLine {
  std::string text, end;
  enum Kind { kBlank, kComment, kSection, kEntry, kOther } kind = kBlank;
  std::string name, value;
  std::size_t valueAt = 0;  // where a replaced value starts

  ModelLine(std::string t, std::string e) : text(std::move(t)), end(std::move(e)) {
    const std::size_t p = text.find_first_not_of(" \t\n\v\f\r");
    const std::size_t eq = text.find('=');
    if (p == std::string::npos) return;
    if (text[p] == ';' || text[p] == '#') {
      kind = kComment;
    } else if (text[p] == '[') {
      kind = kSection;
      name = trim(text.substr(p + 1, text.find(']', p) - std::min(text.find(']', p), p + 1)));
    } else if (eq != std::string::npos) {
      kind = kEntry;
      name = trim(text.substr(p, eq - p));
      value = trim(text.substr(eq + 1));
      for (valueAt = eq + 1; valueAt < text.size() && blank(text[valueAt]);) ++valueAt;
    } else {
      kind = kOther;
    }
  }
};

// The file as lines, and the rules of reading and writing applied to them.
struct Model {
  bool exists = false;
  std::vector<ModelLine> lines;

  void load(const std::string& bytes) {
    exists = true;
    for (std::size_t at = 0, lf; at < bytes.size(); at = lf == std::string::npos ? bytes.size() : lf + 1) {
      lf = bytes.find('\n', at);
      std::string text = bytes.substr(at, lf == std::string::npos ? std::string::npos : lf - at);
      const bool cr = lf != std::string::npos && !text.empty() && text.back() == '\r';
      if (cr) text.pop_back();
      lines.emplace_back(text, lf == std::string::npos ? "" : cr ? "\r\n" : "\n");
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
    for (const ModelLine& l : lines) {
      in.push_back(l.kind == ModelLine::kSection ? same(l.name, section) : !in.empty() && in.back());
    }
    return in;
  }
  bool isEntry(const std::vector<bool>& in, std::size_t i, const std::string& entry) const {
    return in[i] && lines[i].kind == ModelLine::kEntry && same(lines[i].name, entry);
  }
  std::optional<std::size_t> find(const std::string& section, const std::string& entry) const {
    const std::vector<bool> in = under(section);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (isEntry(in, i, entry)) return i;
    }
    return std::nullopt;
  }
  std::vector<std::string> list(const std::string* section) const {
    const std::vector<bool> in = under(section != nullptr ? *section : "");
    std::vector<std::string> names;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const ModelLine& l = lines[i];
      if (l.kind != (section != nullptr ? ModelLine::kEntry : ModelLine::kSection) || l.name.empty())
        continue;
      if (section != nullptr && !in[i]) continue;
      if (std::none_of(names.begin(), names.end(), [&](const std::string& n) { return same(n, l.name); })) {
        names.push_back(l.name);
      }
    }
    return names;
  }

  void set(std::string section, std::string entry, std::string value) {
    section = trim(section), entry = trim(entry), value = trim(value);
    const std::string nl = !lines.empty() && lines[0].end == "\r\n" ? "\r\n" : "\n";
    exists = true;
    if (auto i = find(section, entry)) {
      lines[*i] = ModelLine(lines[*i].text.substr(0, lines[*i].valueAt) + value, lines[*i].end);
      return;
    }
    // After the last entry under the first heading, or after the heading.
    const std::vector<bool> in = under(section);
    std::optional<std::size_t> after;
    for (std::size_t i = 0; i < lines.size() && !(after && lines[i].kind == ModelLine::kSection); ++i) {
      if (in[i] && (lines[i].kind == ModelLine::kSection || (after && lines[i].kind == ModelLine::kEntry)))
        after = i;
    }
    std::size_t at = lines.size();
    if (after) {
      at = *after + 1;
    } else if (!lines.empty() && lines.back().kind != ModelLine::kBlank) {
      if (lines.back().end.empty()) lines.back().end = nl;
      lines.emplace_back("", nl);
      at = lines.size();
    }
    if (at > 0 && lines[at - 1].end.empty()) lines[at - 1].end = nl;
    if (!after) lines.emplace(lines.begin() + static_cast<std::ptrdiff_t>(at++), "[" + section + "]", nl);
    lines.emplace(lines.begin() + static_cast<std::ptrdiff_t>(at), entry + "=" + value, nl);
  }
  void remove(const std::string& section, const std::string* entry) {
    const std::vector<bool> in = under(trim(section));
    std::vector<ModelLine> kept;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (!(entry == nullptr ? in[i] : isEntry(in, i, trim(*entry)))) kept.push_back(lines[i]);
    }
    lines = kept;
  }
};

// The leading decimal number, as the services read it.
std::optional<std::int32_t> number(const std::string& value) {
  const std::size_t p = !value.empty() && (value[0] == '-' || value[0] == '+') ? 1 : 0;
  if (p >= value.size() || !std::isdigit(static_cast<unsigned char>(value[p]))) return std::nullopt;
  const std::uint32_t n = static_cast<std::uint32_t>(std::stoull(value.substr(p, 18)) & 0xFFFFFFFF);
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
    for (char& c : s) c = static_cast<char>(in(2) != 0 ? std::toupper(c) : std::tolower(c));
    return s;
  }
  std::string spaces() { return std::string(in(3), in(2) != 0 ? ' ' : '\t'); }

  std::string randomFile() {
    const unsigned endings = in(3);  // LF, CR LF, or each line its own
    std::string bytes;
    const unsigned count = in(14);
    for (unsigned i = 0; i < count; ++i) {
      const unsigned kind = in(10);
      std::string line = spaces();
      if (kind < 2) {
        line += "[" + spaces() + oddCase(kSections[in(3)]) + spaces() + "]" + (in(4) == 0 ? " ; note" : "");
      } else if (kind < 6) {
        line += oddCase(kEntries[in(4)]) + spaces() + "=" + spaces() + kValues[in(9)] + spaces();
      } else if (kind < 7) {
        line += (in(2) != 0 ? "; " : "#") + oddCase(kEntries[in(4)]) + "=commented";
      } else if (kind < 8) {
        line += "just words";
      }
      const bool crlf = endings == 1 || (endings == 2 && in(2) != 0);
      bytes += line + (i + 1 == count && in(3) == 0 ? "" : crlf ? "\r\n" : "\n");
    }
    return bytes;
  }

  // Every list and read of the services, against the model.
  void expectReads(const Model& model) {
    unsigned char buffer[512];
    zu::platform::profileGetString(nullptr, nullptr, nullptr, buffer, sizeof buffer, u("C:\\P.INI"));
    ASSERT_EQ(splitList(buffer), model.list(nullptr));
    for (const char* section : kSections) {
      const std::string sec = oddCase(section);
      zu::platform::profileGetString(u(sec), nullptr, nullptr, buffer, sizeof buffer, u("C:\\P.INI"));
      ASSERT_EQ(splitList(buffer), model.list(&sec)) << sec;
      for (const char* entry : kEntries) {
        const std::string e = oddCase(entry);
        const auto at = model.find(sec, e);
        zu::platform::profileGetString(u(sec), u(e), u("(none)"), buffer, sizeof buffer, u("C:\\P.INI"));
        ASSERT_EQ(zutest::s(buffer), at ? model.lines[*at].value : "(none)") << sec << "/" << e;
        const std::optional<std::int32_t> n = at ? number(model.lines[*at].value) : std::nullopt;
        ASSERT_EQ(zu::platform::profileGetInt(u(sec), u(e), -99, u("C:\\P.INI")), n.value_or(-99))
            << sec << "/" << e;
      }
    }
  }
};

TEST_F(ProfileModel, WritesTouchOnlyTheirLinesAndReadsFollowTheRules) {
  const char* const kRefused[][3] = {{"Alpha", "a=b", "v"},       {"x]y", "Driver", "v"},
                                     {"Alpha", "Driver", "v\nw"}, {"  ", "Driver", "v"},
                                     {"Alpha", " ", "v"},         {"Alpha", "[x", "v"}};
  // Durability is not what is tested here, and a flush per write is slow.
  zu::platform::host.fsync = [](int) { return 0; };
  for (int file = 0; file < 150; ++file) {
    SCOPED_TRACE("file " + std::to_string(file));
    Model model;
    std::remove(host("c/P.INI").c_str());
    if (in(6) != 0) {
      const std::string bytes = randomFile();
      writeHost("c/P.INI", bytes);
      model.load(bytes);
    }
    for (int op = 0; op < 10; ++op) {
      const std::string section = (in(3) == 0 ? " " : "") + oddCase(kSections[in(3)]);
      const std::string entry = oddCase(kEntries[in(4)]) + (in(3) == 0 ? "\t" : "");
      const std::string value = (in(3) == 0 ? "  " : "") + std::string(kValues[in(9)]);
      const unsigned what = in(20);
      bool written;
      if (what < 12) {
        written = zu::platform::profileWriteString(u(section), u(entry), u(value), u("C:\\P.INI"));
        model.set(section, entry, value);
      } else if (what < 19) {
        const bool whole = what >= 17;
        written =
            zu::platform::profileWriteString(u(section), whole ? nullptr : u(entry), nullptr, u("C:\\P.INI"));
        model.remove(section, whole ? nullptr : &entry);
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
}

}  // namespace
