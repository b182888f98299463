"""The CSV driver as clients meet it: loaded by the unixODBC driver manager
from a private ODBCSYSINI/ODBCINI, queried through isql and pyodbc by data
source and by DRIVER= connect string. Every query's rows are compared with
sqlite3 running the same query over the same data loaded into a table.

Usage: acceptance.py /path/to/libzucsv.so   (exit 77: pyodbc or isql missing)
"""
import atexit
import os
import random
import shutil
import sqlite3
import string
import subprocess
import sys
import tempfile
import threading

try:
    import pyodbc
except ImportError:
    print("pyodbc is missing: skipped")
    sys.exit(77)
ISQL = shutil.which("isql")
if ISQL is None:
    print("isql is missing: skipped")
    sys.exit(77)

DRIVER_PATH = os.path.abspath(sys.argv[1])
ENC = "latin1"  # the driver's texts are bytes; latin1 maps each to one character
failures = []


def check(condition, what):
    if not condition:
        failures.append(what)
        print("FAIL:", what)


# --- the data -----------------------------------------------------------

rng = random.Random(16)
CITIES = ["Oslo", "Paris, France", 'The "Hague"', "Z\u00fcrich", "S\u00e3o Paulo", "line\nbreak", "", None]
WORDS = ["abc", "xabcx", "100%", "a_b", "A_B", "plain", "caf\u00e9 \u00a77", "\u00b0deg", "Mixed Case", "ab%c"]


def people_rows(n):
    rows = []
    for i in range(1, n + 1):
        name = None if i % 17 == 0 else rng.choice(WORDS) + ("" if i % 3 else " " + str(i % 7))
        score = None if i % 11 == 0 else round(rng.uniform(-50, 50), 3)
        born = None if i % 13 == 0 else "19%02d-%02d-%02d" % (rng.randrange(100), rng.randrange(1, 13), rng.randrange(1, 29))
        rows.append((i, name, rng.choice(CITIES), score, born))
    return rows


def big_rows(n):
    # Sort keys of up to 120 bytes: the records of an ORDER BY on them need
    # far more than the sort's 4 MiB of memory, so the sort spills.
    rows = []
    for i in range(1, n + 1):
        pad = "".join(rng.choice(string.ascii_letters) for _ in range(rng.randrange(60, 121)))
        rows.append((i, rng.choice(["red", "green", "blue", None]), rng.randrange(50), pad))
    return rows


def csv_field(v):
    if v is None:
        return ""
    s = str(v)
    if s == "" or any(c in s for c in ',"\r\n'):
        return '"' + s.replace('"', '""') + '"'
    return s


def write_csv(path, header, rows, eol="\r\n"):
    with open(path, "wb") as f:
        f.write((",".join(header) + eol).encode(ENC))
        for row in rows:
            f.write((",".join(csv_field(v) for v in row) + eol).encode(ENC))


# --- the setting --------------------------------------------------------

# The library sees files through DOS names: every component 8.3.
base = None
for _ in range(100):
    candidate = "/tmp/zc%06d" % rng.randrange(1000000)
    try:
        os.mkdir(candidate)
        base = candidate
        break
    except FileExistsError:
        continue
atexit.register(shutil.rmtree, base, True)
data = os.path.join(base, "data")
ini = os.path.join(base, "ini")
os.mkdir(data)
os.mkdir(ini)
with open(os.path.join(ini, "odbcinst.ini"), "w") as f:
    f.write("[ZuCSV]\nDriver=%s\n" % DRIVER_PATH)
with open(os.path.join(ini, "odbc.ini"), "w") as f:
    f.write("[csvtest]\nDriver=ZuCSV\nDBQ=%s\n" % data)
os.environ["ODBCSYSINI"] = ini
os.environ["ODBCINI"] = os.path.join(ini, "odbc.ini")

PEOPLE = people_rows(400)
BIG = big_rows(45000)
write_csv(os.path.join(data, "people.csv"), ["id", "name", "city", "score", "born"], PEOPLE)
write_csv(os.path.join(data, "big.csv"), ["id", "k1", "k2", "pad"], BIG, eol="\n")
write_csv(os.path.join(data, "log.csv"), ["id", "who", "note"], [])
with open(os.path.join(data, "schema.ini"), "w") as f:
    f.write("[people.csv]\nColNameHeader=True\nCol1=id Integer\nCol2=name Text\nCol3=city Text\n"
            "Col4=score Double\nCol5=born Date\n\n"
            "[big.csv]\nCol1=id Integer\nCol2=k1 Text\nCol3=k2 Integer\nCol4=pad Text\n\n"
            "[log.csv]\nCol1=id Integer\nCol2=who Text\nCol3=note Text\n")
# Broken files, and a file outside the directory that must never be read.
with open(os.path.join(data, "ragged.csv"), "wb") as f:
    f.write(b"a,b\n1,2\n3,4,5\n")
with open(os.path.join(data, "unterm.csv"), "wb") as f:
    f.write(b'a,b\n1,2\n3,"open\n4,5\n')
with open(os.path.join(base, "secret.csv"), "wb") as f:
    f.write(b"s\nsecret\n")

lite = sqlite3.connect(":memory:")
lite.execute("CREATE TABLE people (id INTEGER, name TEXT, city TEXT, score REAL, born TEXT)")
lite.execute("CREATE TABLE big (id INTEGER, k1 TEXT, k2 INTEGER, pad TEXT)")
lite.executemany("INSERT INTO people VALUES (?,?,?,?,?)", PEOPLE)
lite.executemany("INSERT INTO big VALUES (?,?,?,?)", BIG)


def connect(how):
    text = "DSN=csvtest" if how == "dsn" else "DRIVER={ZuCSV};DBQ=%s" % data
    c = pyodbc.connect(text, autocommit=True)
    c.setencoding(encoding=ENC)
    c.setdecoding(pyodbc.SQL_CHAR, encoding=ENC)
    return c


def normal(rows):
    # Dates come back as datetime.date; sqlite holds their text.
    return [tuple(v.isoformat() if hasattr(v, "isoformat") else v for v in row) for row in rows]


def unordered(rows):
    return sorted(rows, key=lambda r: tuple((v is not None, str(type(v)), v) for v in r))


# (query, parameters, ordered): ordered queries name keys that decide every
# tie, so their rows compare in order; the others compare as multisets.
QUERIES = [
    ("SELECT * FROM people", (), False),
    ("SELECT id, name FROM people WHERE name LIKE '%abc%'", (), False),
    ("SELECT id FROM people WHERE name LIKE 'a_b%'", (), False),
    ("SELECT id, name FROM people WHERE name LIKE '%!%%' ESCAPE '!'", (), False),
    ("SELECT id FROM people WHERE name LIKE '%a!_b%' ESCAPE '!'", (), False),
    ("SELECT id FROM people WHERE name NOT LIKE '%\u00a7%'", (), False),
    ("SELECT id, city FROM people WHERE city = 'Paris, France' OR city = 'line\nbreak'", (), False),
    ("SELECT id FROM people WHERE city = 'The \"Hague\"' AND NOT (score < 0)", (), False),
    ("SELECT id, score FROM people WHERE score IS NULL OR born IS NULL", (), False),
    ("SELECT id FROM people WHERE name IS NOT NULL AND (score >= 10.5 OR score <= -10)", (), False),
    ("SELECT id FROM people WHERE city <> 'Oslo'", (), False),
    ("SELECT id FROM people WHERE city = ''", (), False),
    ("SELECT id, born FROM people WHERE born > '1950-06-01' AND born <= '1980-12-31'", (), False),
    ("SELECT id, name, city FROM people WHERE city = ? AND score > ?", ("Z\u00fcrich", 0.0), False),
    ("SELECT id FROM people WHERE name LIKE ? AND id < ?", ("%a%", 200), False),
    ("SELECT id FROM people WHERE city = ?", (None,), False),
    ("SELECT DISTINCT city FROM people", (), False),
    ("SELECT DISTINCT k1, k2 FROM big WHERE k2 < 10", (), False),
    ("SELECT * FROM people ORDER BY city DESC, score, id", (), True),
    ("SELECT id, name FROM people WHERE score > 0 ORDER BY name, id DESC", (), True),
    ("SELECT id, k1, k2 FROM big ORDER BY k1, pad DESC, k2, id", (), True),
    ("SELECT DISTINCT k1 FROM big ORDER BY k1", (), True),
]


def run_queries(conn, label):
    cur = conn.cursor()
    for sql, params, ordered in QUERIES:
        if os.environ.get("ZU_DRIVER_VERBOSE"):
            print(label, sql, flush=True)
        got = normal(cur.execute(sql, *params).fetchall())
        want = lite.execute(sql, params).fetchall()
        if not ordered:
            got, want = unordered(got), unordered(want)
        check(got == want, "%s: %s gives %d rows, sqlite %d%s" % (
            label, sql, len(got), len(want), "" if len(got) != len(want) else " (rows differ)"))


def clients():
    """Each client and way of connecting, one at a time."""
    for how in ("dsn", "driver"):
        c = connect(how)
        run_queries(c, "pyodbc/" + how)
        c.close()

    # --- long values in pieces, INSERT, the catalog -------------------------

    c = connect("dsn")
    cur = c.cursor()
    long_text = "".join(rng.choice(string.ascii_letters + ",\"\n\u00e9") for _ in range(20000))
    cur.execute("INSERT INTO log (id, who, note) VALUES (?, ?, ?)", 1, "first, \"quoted\"", long_text)
    cur.execute("INSERT INTO log VALUES (2, NULL, '')")
    check(cur.rowcount == 1, "INSERT reports one row")
    rows = cur.execute("SELECT id, who, note FROM log ORDER BY id").fetchall()
    check([tuple(r) for r in rows] == [(1, 'first, "quoted"', long_text), (2, None, "")],
          "INSERT then SELECT gives back what went in (a %d-byte value read in pieces)" % len(long_text))
    tables = sorted(r.table_name for r in cur.tables())
    check(tables == ["big", "log", "people", "ragged", "unterm"], "SQLTables lists the CSV files: %s" % tables)
    columns = [(r.column_name, r.type_name, r.data_type, r.ordinal_position) for r in cur.columns(table="people")]
    check(columns == [("id", "BIGINT", pyodbc.SQL_BIGINT, 1), ("name", "VARCHAR", pyodbc.SQL_VARCHAR, 2),
                      ("city", "VARCHAR", pyodbc.SQL_VARCHAR, 3), ("score", "DOUBLE", pyodbc.SQL_DOUBLE, 4),
                      ("born", "DATE", pyodbc.SQL_TYPE_DATE, 5)], "SQLColumns describes people: %s" % columns)
    # A type's name and number agree wherever the driver gives both.
    type_info = {r.type_name: r.data_type for r in cur.getTypeInfo()}
    check(all(type_info.get(name) == number for _, name, number, _ in columns),
          "SQLGetTypeInfo gives the names SQLColumns uses the same numbers: %s" % type_info)
    check([d[0] for d in cur.execute("SELECT name, id FROM people").description] == ["name", "id"],
          "SQLDescribeCol names the columns")

    # --- diagnostics --------------------------------------------------------

    def expect_error(action, state, words, what):
        try:
            action()
        except pyodbc.Error as e:
            text = str(e.args[1]) if len(e.args) > 1 else str(e)
            check(e.args[0] == state and all(w in text for w in words),
                  "%s: %s %s, wanted %s with %s" % (what, e.args[0], text, state, words))
            return
        check(False, "%s: no error" % what)

    expect_error(lambda: pyodbc.connect("DRIVER={ZuCSV};DBQ=%s;;HEADER=1" % data), "08001",
                 ["Error parsing connect string at offset"], "a connect string that does not parse")
    expect_error(lambda: pyodbc.connect("DRIVER={ZuCSV};DBQ=%s;dbq=x" % data), "08001",
                 ["specified more than once"], "a repeated keyword")
    expect_error(lambda: cur.execute("SELECT id FROM people WHERE"), "42000", ["offset 27"], "SQL that does not parse")
    expect_error(lambda: cur.execute("SELECT id FROM people WHERE name = 'open"), "42000", ["offset 35"],
                 "an unclosed quote")
    expect_error(lambda: cur.execute("SELECT * FROM nosuch"), "42S02", ["nosuch", "Cannot open file"], "a missing table")
    expect_error(lambda: cur.execute("SELECT nope FROM people"), "42S22", ["nope"], "a missing column")
    for outside in ['"../secret"', '"/etc/passwd"', '"C:\\etc\\passwd"', '"..\\secret.csv"']:
        expect_error(lambda: cur.execute("SELECT * FROM " + outside), "42S02", ["not a file name inside"],
                     "a path outside the directory: " + outside)
    expect_error(lambda: cur.execute("SELECT * FROM ragged").fetchall(), "HY000", ["ragged.csv", "line 3"],
                 "a ragged row")
    expect_error(lambda: cur.execute("SELECT * FROM unterm").fetchall(), "HY000", ["unterm.csv", "line 3", "quoted"],
                 "an unterminated quote")
    c.close()

    # --- isql, by data source and by connect string -------------------------

    def isql(args, sql):
        run = subprocess.run([ISQL, "-b", "-x0x09"] + args, input=(sql + "\n").encode(), capture_output=True,
                             timeout=120)
        return run.returncode, run.stdout.decode(ENC)

    sql = "SELECT id FROM people WHERE name LIKE '%abc%' AND score > 0 ORDER BY id"
    want = [str(r[0]) for r in lite.execute(sql)]
    for args, label in ((["csvtest"], "isql by DSN"), (["-k", "DRIVER={ZuCSV};DBQ=%s" % data], "isql by DRIVER=")):
        rc, out = isql(args, sql)
        got = [line.strip() for line in out.splitlines() if line.strip().isdigit()]
        check(rc == 0 and got == want, "%s: %d rows, sqlite %d (exit %d)" % (label, len(got), len(want), rc))
    rc, out = isql(["csvtest", "-v"], "SELECT * FROM nosuch")
    # isql asks for ODBC 2 behaviour, so the driver manager shows 42S02 as S0002.
    check(("42S02" in out or "S0002" in out) and "nosuch" in out, "isql shows the missing table's diagnostic: %r" % out[-200:])


# --- threads and processes ----------------------------------------------

APPENDS = 150
appender = """
import pyodbc, sys
c = pyodbc.connect("DSN=csvtest", autocommit=True)
cur = c.cursor()
for i in range(%d):
    cur.execute("INSERT INTO log (id, who, note) VALUES (?, ?, ?)", 1000 * int(sys.argv[1]) + i, "p" + sys.argv[1],
                "row, with a comma\\nand a line")
""" % APPENDS


def threads_and_processes():
    """8 threads querying at once, and 2 processes appending to one table."""
    THREAD_QUERIES = [q for q in QUERIES if "big" not in q[0] or "DISTINCT" in q[0]]
    expected = {}
    for sql, params, ordered in THREAD_QUERIES:
        rows = lite.execute(sql, params).fetchall()
        expected[sql] = rows if ordered else unordered(rows)

    def worker(n, errors):
        try:
            conn = connect("dsn" if n % 2 else "driver")
            cur = conn.cursor()
            for _ in range(3):
                for sql, params, ordered in THREAD_QUERIES:
                    got = normal(cur.execute(sql, *params).fetchall())
                    if (got if ordered else unordered(got)) != expected[sql]:
                        errors.append("thread %d: %s" % (n, sql))
            conn.close()
        except Exception as e:  # noqa: BLE001 - a thread's failure is reported, not raised
            errors.append("thread %d: %r" % (n, e))

    errors = []
    threads = [threading.Thread(target=worker, args=(n, errors)) for n in range(8)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    check(not errors, "8 threads querying at once: %s" % errors[:3])

    procs = [subprocess.Popen([sys.executable, "-c", appender, str(p)]) for p in (1, 2)]
    check(all(p.wait(timeout=300) == 0 for p in procs), "both appending processes finish")
    c = connect("dsn")
    ids = sorted(r[0] for r in c.cursor().execute("SELECT id FROM log WHERE id >= 1000").fetchall())
    want = sorted([1000 + i for i in range(APPENDS)] + [2000 + i for i in range(APPENDS)])
    check(ids == want, "2 processes appending to one table: %d rows of %d" % (len(ids), len(want)))
    c.close()


clients()
threads_and_processes()

if failures:
    print("%d check(s) failed" % len(failures))
    sys.exit(1)
print("driver acceptance: all checks passed")
