#!/usr/bin/python3
"""Every text the program asks for stands in all three translation files, with the placeholders of its key.

usage: check_texts.py SOURCE_FOLDER

What is asked for: literal keys of localizedString(), every Chinese literal of the sources (they are keys by habit), the
texts of the forms (table = class of the form) and the error codes that the document server answers with.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

LANGUAGES = ("zh-Hans", "zh-Hant", "en")
CHINESE = re.compile("[\u3400-\u9fff]")
PLACEHOLDER = re.compile(r"%(?:@|l?d|s|\.\d+f|\d+)")
LITERAL = r'(?:u8|u|L)?"((?:[^"\\\n]|\\.)*)"(?:_s|_L1)?'
LITERALS = re.compile(rf"{LITERAL}(?:\s*{LITERAL})*")
# Chinese that is no key: log lines, patterns and the duration words that a lock message is searched for.
NOT_KEYS = ("取消注销", "符合要求", "locked by", "Exception reason", "一小时", "一小時", "分钟", "分鐘")
# One list keyed by file name: what a file needs in Chinese that the user never reads as a translated text.
DATA_FILES = ("DocumentServer",)


def unescaped(text):
    return re.sub(r'\\(["\\])', r"\1", text).replace("\\n", "\n")


def joined(match):
    return unescaped("".join(re.findall(LITERAL, match.group(0))))


def without_comments(source):
    keep = re.compile(r'("(?:[^"\\\n]|\\.)*")|//[^\n]*|/\*.*?\*/', re.S)
    return keep.sub(lambda match: match.group(1) or " ", source)


def arguments_at(source, position):
    """The top-level arguments of the call whose opening parenthesis stands before `position`."""
    depth, start, found = 0, position, []
    for token in re.compile(r'"(?:[^"\\\n]|\\.)*"|[(){},]').finditer(source, position):
        symbol = token.group(0)
        if symbol in "({":
            depth += 1
        elif symbol in ")}":
            depth -= 1
            if depth < 0:
                return found + [source[start:token.start()]]
        elif symbol == "," and depth == 0:
            found.append(source[start:token.start()])
            start = token.end()
    return found


def read_tables(path, problems):
    tables = {}
    try:
        root = ElementTree.parse(path).getroot()
    except (ElementTree.ParseError, OSError) as error:
        problems.append(f"{path.name}: not readable: {error}")
        return tables
    for context in root.findall("context"):
        name = context.findtext("name")
        texts = tables.setdefault(name, {})
        for message in context.findall("message"):
            key, translation = message.findtext("source"), message.find("translation")
            if key in texts:
                problems.append(f"{path.name}: {name}: {key!r} stands twice")
            if translation is None or not translation.text or translation.get("type"):
                problems.append(f"{path.name}: {name}: {key!r} has no finished text")
            texts[key] = (translation.text if translation is not None else "") or ""
    return tables


def compare_languages(tables, problems):
    every = {(table, key) for texts in tables.values() for table, keys in texts.items() for key in keys}
    for table, key in sorted(every):
        expected = PLACEHOLDER.findall(key) if CHINESE.search(key) else None
        for language in LANGUAGES:
            text = tables[language].get(table, {}).get(key)
            if text is None:
                problems.append(f"{language}: table {table} lacks {key!r}")
                continue
            found = PLACEHOLDER.findall(text)
            expected = found if expected is None else expected
            if found != expected:
                problems.append(f"{language}: {table}: {key!r} has placeholders {found}, not {expected}")


def keys_of_code(path):
    """(key, table) pairs of one source file; the table is None where only the key is known."""
    source = without_comments(path.read_text(encoding="utf-8"))
    for call in re.finditer(r"\blocalizedString\s*\(", source):
        literals = [LITERALS.search(argument) for argument in arguments_at(source, call.end())]
        if literals and literals[0]:
            table = "Localizable" if len(literals) == 1 else joined(literals[1]) if literals[1] else None
            yield joined(literals[0]), table
    for match in LITERALS.finditer(source):
        text = joined(match)
        if CHINESE.search(text) and not any(word in text for word in NOT_KEYS):
            yield text, None


def keys_of_form(path):
    root = ElementTree.parse(path).getroot()
    for text in root.iter("string"):
        if text.text and text.get("notr") != "true":
            yield text.text, root.findtext("class")


def keys_of_server(path):
    for code in re.findall(r"(?<![\w.])[45]0\d{4}(?![\w.])", without_comments(path.read_text(encoding="utf-8"))):
        yield code


def compare_sources(root, tables, problems):
    texts = tables["en"]
    everywhere = {key for keys in texts.values() for key in keys}
    for folder in ("QuillboxManager", "FUSEService", "appInstall", "DocumentServer"):
        for path in sorted((root / folder).rglob("*")):
            name, data = path.relative_to(root), folder in DATA_FILES
            if path.suffix in (".cpp", ".h", ".mm") and not data:
                for key, table in keys_of_code(path):
                    if key not in (everywhere if table is None else texts.get(table, {})):
                        problems.append(f"{name}: no text for {key!r} in {table or 'any table'}")
            elif path.suffix == ".ui":
                problems.extend(f"{name}: no text for {key!r} in {table}" for key, table in keys_of_form(path)
                                if key not in texts.get(table, {}))
            elif path.suffix in (".cpp", ".h"):
                problems.extend(f"{name}: no text for code {code}" for code in keys_of_server(path)
                                if code not in texts["Messages"] and code not in texts["BackUpMessages"])


def main():
    root = pathlib.Path(sys.argv[1])
    folder, problems = root / "QuillboxManager/resources/translations", []
    tables = {language: read_tables(folder / f"quillbox_{language}.ts", problems) for language in LANGUAGES}
    compare_languages(tables, problems)
    compare_sources(root, tables, problems)
    print("\n".join(dict.fromkeys(problems)) or f"{sum(map(len, tables['en'].values()))} texts in {len(LANGUAGES)} languages")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
