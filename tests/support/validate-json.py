#!/usr/bin/env python3
"""Validates quillon plans and reports against the JSON Schemas.

validate-json.py SCHEMA_DIR FILE...   (a FILE of - is standard input)

Each document names its schema ("schema": "quillon-plan/1" or
"quillon-report/1"). Exit 0 when all are valid, 1 when one is not (the
errors on standard error), 77 when python3-jsonschema is missing.
"""
import json
import pathlib
import sys

try:
    import jsonschema
except ImportError:
    print("python3-jsonschema is not installed", file=sys.stderr)
    sys.exit(77)

SCHEMAS = {"quillon-plan/1": "plan.schema.json", "quillon-report/1": "report.schema.json"}


def validator_for(schema_dir, name):
    schemas = [json.loads((schema_dir / file).read_text()) for file in SCHEMAS.values()]
    schema = json.loads((schema_dir / name).read_text())
    cls = jsonschema.Draft202012Validator
    cls.check_schema(schema)
    try:  # jsonschema 4.18 and later
        from referencing import Registry, Resource
        registry = Registry().with_resources((s["$id"], Resource.from_contents(s)) for s in schemas)
        return cls(schema, registry=registry)
    except ImportError:  # Debian 12's jsonschema 4.10
        resolver = jsonschema.RefResolver.from_schema(schema, store={s["$id"]: s for s in schemas})
        return cls(schema, resolver=resolver)


def main():
    schema_dir = pathlib.Path(sys.argv[1])
    failures = 0
    for path in sys.argv[2:]:
        text = sys.stdin.read() if path == "-" else pathlib.Path(path).read_text(encoding="utf-8")
        document = json.loads(text)
        name = SCHEMAS.get(document.get("schema") if isinstance(document, dict) else None)
        if name is None:
            print(f"{path}: no known \"schema\" field", file=sys.stderr)
            failures += 1
            continue
        for error in validator_for(schema_dir, name).iter_errors(document):
            where = "/".join(str(part) for part in error.absolute_path)
            print(f"{path}: /{where}: {error.message}", file=sys.stderr)
            failures += 1
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
