"""Holds JSON documents of TaVekInspect against their schema, where the package python3-jsonschema is there."""

import json
import pathlib

try:
    import jsonschema
except ImportError:
    jsonschema = None

SCHEMA = pathlib.Path(__file__).parents[3] / "schemas" / "inspect.schema.json"

_validator = None


def validate(document):
    """Raises jsonschema.ValidationError for a document that breaks the schema."""
    global _validator
    if jsonschema is None:
        return
    if _validator is None:
        text = json.loads(SCHEMA.read_text())
        jsonschema.Draft7Validator.check_schema(text)
        _validator = jsonschema.Draft7Validator(text)
    _validator.validate(document)
