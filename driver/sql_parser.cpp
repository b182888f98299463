// The statement grammar, read token by token with the library's scanner:
//   SELECT [DISTINCT] * | column [, column]... FROM table
//     [WHERE condition] [ORDER BY column [ASC|DESC] [, ...]]
//   INSERT INTO table [(column [, column]...)] VALUES (value [, value]...)
// A condition is built of comparisons (= <> != < > <= >=), [NOT] LIKE with
// an optional ESCAPE, IS [NOT] NULL, AND, OR, NOT and parentheses over
// columns, 'texts', numbers, NULL and ? markers. Names may be quoted with
// "", `` or [].
#include <zuutl.h>

#include "call_scope.h"
#include "sql_ast.h"

namespace zucsv {
namespace {

constexpr std::uint32_t op2(char a, char b) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(a)) * 256u + static_cast<unsigned char>(b);
}
constexpr std::uint32_t kNotEqual = op2('<', '>');
constexpr std::uint32_t kBangEqual = op2('!', '=');
constexpr std::uint32_t kLessEqual = op2('<', '=');
constexpr std::uint32_t kGreaterEqual = op2('>', '=');

const char* const kReserved[] = {"SELECT", "DISTINCT", "FROM", "WHERE", "ORDER", "BY",   "ASC",    "DESC",
                                 "AND",    "OR",       "NOT",  "LIKE",  "ESCAPE", "IS", "NULL", "INSERT",
                                 "INTO",   "VALUES"};

class Parser {
 public:
  Parser(const std::string& text, ParsedStatement* out)
      : out_(out), scanner_(reinterpret_cast<const unsigned char*>(text.data()),
                                         static_cast<std::uint32_t>(text.size())) {
    scanner_.blockOpen = '[';
    scanner_.blockClose = ']';
    advance();
  }

  bool statement() {
    if (isWord("SELECT")) {
      advance();
      return select();
    }
    if (isWord("INSERT")) {
      advance();
      return insert();
    }
    return fail("SELECT or INSERT");
  }

 private:
  void advance() {
    scanner_.getToken(token_);
    while (token_.getType() == ZU_TOKEN_COMMENT) scanner_.getToken(token_);
  }
  std::string tokenText() const { return std::string(reinterpret_cast<const char*>(token_.bytes), token_.length); }
  bool isWord(const char* word) const {
    return token_.getType() == ZU_TOKEN_WORD &&
           strCompareCi(token_.bytes, token_.length, reinterpret_cast<const unsigned char*>(word),
                        static_cast<std::uint32_t>(std::char_traits<char>::length(word))) == 0;
  }
  bool isOp(std::uint32_t op) const { return token_.getType() == op; }
  bool isReserved() const {
    for (const char* word : kReserved) {
      if (isWord(word)) return true;
    }
    return false;
  }
  bool fail(const char* expected) {
    const std::string found =
        token_.getType() == ZU_TOKEN_END ? std::string("the end of the statement") : "'" + tokenText() + "'";
    driverError("42000", "Syntax error at offset " + std::to_string(token_.getOffset()) + ": " + expected +
                             " expected, " + found + " found.");
    return false;
  }
  bool expectWord(const char* word) {
    if (!isWord(word)) return fail(word);
    advance();
    return true;
  }
  bool expectOp(char op, const char* shown) {
    if (!isOp(static_cast<unsigned char>(op))) return fail(shown);
    advance();
    return true;
  }

  // A name: a word that is not reserved, or a quoted or bracketed one.
  bool name(std::string* out, std::uint32_t* offset) {
    *offset = token_.getOffset();
    if (token_.getType() == ZU_TOKEN_WORD && !isReserved()) {
      *out = tokenText();
      advance();
      return true;
    }
    if (token_.getType() == ZU_TOKEN_QUOTED && token_.length >= 2 &&
        (token_.bytes[0] == '"' || token_.bytes[0] == '`' || token_.bytes[0] == '[')) {
      const char quote = static_cast<char>(token_.bytes[0]);
      const std::string inner = tokenText().substr(1, token_.length - 2);
      std::string unquoted;
      for (std::size_t i = 0; i < inner.size(); ++i) {
        unquoted += inner[i];
        if (quote != '[' && inner[i] == quote && i + 1 < inner.size() && inner[i + 1] == quote) ++i;
      }
      *out = unquoted;
      advance();
      return true;
    }
    return fail("a name");
  }

  bool tableName() {
    if (!name(&out_->table, &out_->tableOffset)) return false;
    // people.csv: a file name with its extension.
    while (isOp('.')) {
      advance();
      std::string part;
      std::uint32_t offset = 0;
      if (!name(&part, &offset)) return false;
      out_->table += "." + part;
    }
    return true;
  }

  bool columnList(std::vector<ColumnRef>* list, bool withDirection) {
    for (;;) {
      ColumnRef ref;
      if (!name(&ref.name, &ref.offset)) return false;
      if (withDirection && isWord("DESC")) {
        ref.descending = true;
        advance();
      } else if (withDirection && isWord("ASC")) {
        advance();
      }
      list->push_back(ref);
      if (!isOp(',')) return true;
      advance();
    }
  }

  bool select() {
    if (isWord("DISTINCT")) {
      out_->distinct = true;
      advance();
    }
    if (isOp('*')) {
      out_->star = true;
      advance();
    } else if (!columnList(&out_->items, false)) {
      return false;
    }
    if (!expectWord("FROM") || !tableName()) return false;
    if (isWord("WHERE")) {
      advance();
      if (!condition(&out_->where)) return false;
    }
    if (isWord("ORDER")) {
      advance();
      if (!expectWord("BY") || !columnList(&out_->order, true)) return false;
    }
    return end();
  }

  bool insert() {
    out_->kind = ParsedStatement::kInsert;
    if (!expectWord("INTO") || !tableName()) return false;
    if (isOp('(')) {
      advance();
      if (!columnList(&out_->items, false) || !expectOp(')', "')'")) return false;
    }
    if (!expectWord("VALUES") || !expectOp('(', "'('")) return false;
    for (;;) {
      std::unique_ptr<Expr> value;
      if (!operand(&value)) return false;
      if (value->kind == ExprKind::kColumn) {
        token_.offset = value->offset;
        token_.length = 0;
        return fail("a value");
      }
      out_->values.push_back(std::move(value));
      if (!isOp(',')) break;
      advance();
    }
    return expectOp(')', "')'") && end();
  }

  bool end() {
    if (isOp(';')) advance();
    if (token_.getType() != ZU_TOKEN_END) return fail("the end of the statement");
    return true;
  }

  static std::unique_ptr<Expr> node(ExprKind kind, std::uint32_t offset) {
    auto e = std::make_unique<Expr>();
    e->kind = kind;
    e->offset = offset;
    return e;
  }

  bool condition(std::unique_ptr<Expr>* out) {
    if (!conjunction(out)) return false;
    while (isWord("OR")) {
      auto e = node(ExprKind::kOr, token_.getOffset());
      advance();
      e->left = std::move(*out);
      if (!conjunction(&e->right)) return false;
      *out = std::move(e);
    }
    return true;
  }

  bool conjunction(std::unique_ptr<Expr>* out) {
    if (!negation(out)) return false;
    while (isWord("AND")) {
      auto e = node(ExprKind::kAnd, token_.getOffset());
      advance();
      e->left = std::move(*out);
      if (!negation(&e->right)) return false;
      *out = std::move(e);
    }
    return true;
  }

  bool negation(std::unique_ptr<Expr>* out) {
    if (isWord("NOT")) {
      auto e = node(ExprKind::kNot, token_.getOffset());
      advance();
      if (!negation(&e->left)) return false;
      *out = std::move(e);
      return true;
    }
    return predicate(out);
  }

  bool predicate(std::unique_ptr<Expr>* out) {
    if (isOp('(')) {
      advance();
      return condition(out) && expectOp(')', "')'");
    }
    std::unique_ptr<Expr> left;
    if (!operand(&left)) return false;
    const std::uint32_t at = token_.getOffset();
    CompareOp op;
    if (compareOp(&op)) {
      auto e = node(ExprKind::kCompare, at);
      e->op = op;
      e->left = std::move(left);
      if (!operand(&e->right)) return false;
      *out = std::move(e);
      return true;
    }
    bool negated = false;
    if (isWord("NOT")) {
      negated = true;
      advance();
      if (!isWord("LIKE")) return fail("LIKE");
    }
    if (isWord("LIKE")) {
      auto e = node(ExprKind::kLike, at);
      e->negated = negated;
      advance();
      e->left = std::move(left);
      if (!operand(&e->right)) return false;
      if (isWord("ESCAPE")) {
        advance();
        if (!operand(&e->escape)) return false;
      }
      *out = std::move(e);
      return true;
    }
    if (isWord("IS")) {
      auto e = node(ExprKind::kIsNull, at);
      advance();
      if (isWord("NOT")) {
        e->negated = true;
        advance();
      }
      if (!expectWord("NULL")) return false;
      e->left = std::move(left);
      *out = std::move(e);
      return true;
    }
    return fail("a comparison, LIKE or IS");
  }

  bool compareOp(CompareOp* op) {
    const std::uint32_t t = token_.getType();
    if (t == '=') *op = CompareOp::kEqual;
    else if (t == kNotEqual || t == kBangEqual) *op = CompareOp::kNotEqual;
    else if (t == '<') *op = CompareOp::kLess;
    else if (t == '>') *op = CompareOp::kGreater;
    else if (t == kLessEqual) *op = CompareOp::kLessEqual;
    else if (t == kGreaterEqual) *op = CompareOp::kGreaterEqual;
    else return false;
    advance();
    return true;
  }

  // A column, a 'text', a number, NULL or a ? marker.
  bool operand(std::unique_ptr<Expr>* out) {
    const std::uint32_t at = token_.getOffset();
    if (isOp('?')) {
      auto e = node(ExprKind::kParameter, at);
      e->parameter = out_->parameterCount++;
      advance();
      *out = std::move(e);
      return true;
    }
    if (isWord("NULL")) {
      *out = node(ExprKind::kLiteral, at);
      advance();
      return true;
    }
    if (token_.getType() == ZU_TOKEN_QUOTED && token_.length >= 2 && token_.bytes[0] == '\'') {
      auto e = node(ExprKind::kLiteral, at);
      const std::string inner = tokenText().substr(1, token_.length - 2);
      std::string unquoted;
      for (std::size_t i = 0; i < inner.size(); ++i) {
        unquoted += inner[i];
        if (inner[i] == '\'' && i + 1 < inner.size() && inner[i + 1] == '\'') ++i;
      }
      typedValue(reinterpret_cast<const unsigned char*>(unquoted.data()), unquoted.size(), ColumnType::kText,
                 &e->literal);
      advance();
      *out = std::move(e);
      return true;
    }
    if (token_.getType() == ZU_TOKEN_UNTERMINATED) return fail("a closing quote");
    bool minus = false;
    if (isOp('-') || isOp('+')) {
      minus = isOp('-');
      advance();
      if (token_.getType() != ZU_TOKEN_NUMBER && token_.getType() != ZU_TOKEN_REAL) return fail("a number");
    }
    if (token_.getType() == ZU_TOKEN_NUMBER || token_.getType() == ZU_TOKEN_REAL) {
      auto e = node(ExprKind::kLiteral, at);
      const std::string number = (minus ? "-" : "") + tokenText();
      const bool integral = number.find('.') == std::string::npos;
      if (!typedValue(reinterpret_cast<const unsigned char*>(number.data()), number.size(),
                      integral ? ColumnType::kInteger : ColumnType::kDouble, &e->literal)) {
        return fail("a number");
      }
      advance();
      *out = std::move(e);
      return true;
    }
    auto e = node(ExprKind::kColumn, at);
    if (!name(&e->name, &e->offset)) return false;
    *out = std::move(e);
    return true;
  }

  ParsedStatement* out_;
  ZuScanner scanner_;
  ZuToken token_;
};

}  // namespace

bool parseSql(const std::string& text, ParsedStatement* out) {
  Parser parser(text, out);
  return parser.statement();
}

}  // namespace zucsv
