#!/usr/bin/env python3
"""What the program prints with --json is what docs/json.schema.json says, for every sample and a hostile message."""
import json
import pathlib
import subprocess
import sys
import tempfile

try:
    import jsonschema
except ImportError:
    print("skipped: the Python module jsonschema is not there")
    sys.exit(77)

program, root = sys.argv[1], pathlib.Path(sys.argv[2])
schema = json.loads((root / "docs/json.schema.json").read_text())
validator = jsonschema.Draft7Validator(schema)
jsonschema.Draft7Validator.check_schema(schema)
samples = sorted((root / "tests/data/messages").glob("*.eml"))


def lines(*arguments):
    output = subprocess.run([program, *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    return [json.loads(line) for line in output.splitlines()]


with tempfile.TemporaryDirectory() as folder:
    hostile = pathlib.Path(folder) / "hostile"
    hostile.write_bytes(b"X\xff: \x80\r\nContent-Type: a/b; =; x; n*0*=''%ff\r\nContent-Disposition: \0\r\n\r\n\xfe")
    documents = lines("tree", "--json", "--checksum", *samples, hostile) + lines("detect", "--json", *samples, hostile)
    documents += lines("check", "--json", *samples, hostile)
    documents += lines("stats", "--json", *samples, hostile)
assert len(documents) == 3 * (len(samples) + 1) + 1, len(documents)
for document in documents:
    for error in validator.iter_errors(document):
        sys.exit(f"{document.get('file')}: {error.message} at {list(error.path)}")

# The schema refuses what it does not know, so that it cannot fall behind.
broken = dict(documents[0], surprise=1)
assert not validator.is_valid(broken), "an unknown key must be refused"
print(f"{len(documents)} documents are as the schema says")
