#!/usr/bin/env python3
"""Checks Open Job Description templates against openjd.schema.json, and runs the job of one on this machine.

    openjd.py check TEMPLATE ...
    openjd.py run TEMPLATE [PARAMETER=VALUE ...]

Only what the templates of packaging/farm use: INT and STRING task parameters, steps with dependencies, embedded files,
and format strings. Steps and tasks run one after another. The exit status is 1 if a template is wrong or a task fails.
"""

import itertools
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import jsonschema
import yaml

SCHEMA = pathlib.Path(__file__).with_name("openjd.schema.json")


class WrongTemplate(Exception):
    pass


def load(path):
    template = yaml.safe_load(pathlib.Path(path).read_text(encoding="utf-8"))
    schema = json.loads(SCHEMA.read_text(encoding="utf-8"))
    errors = sorted(jsonschema.Draft202012Validator(schema).iter_errors(template), key=lambda e: list(e.path))
    if errors:
        where = "/".join(map(str, errors[0].absolute_path))
        raise WrongTemplate(f"{path}: {where}: {errors[0].message}")
    check_names(path, template)
    return template


def references(value):
    """All names in format strings, anywhere in the value."""
    if isinstance(value, str):
        yield from (name.strip() for name in re.findall(r"\{\{(.*?)\}\}", value))
    elif isinstance(value, dict):
        for child in value.values():
            yield from references(child)
    elif isinstance(value, list):
        for child in value:
            yield from references(child)


def check_names(path, template):
    """What a schema cannot say: format strings and dependencies name what exists."""
    job = {f"Param.{one['name']}" for one in template["parameterDefinitions"]}
    steps = []
    for step in template["steps"]:
        known = set(job)
        space = step.get("parameterSpace", {}).get("taskParameterDefinitions", [])
        known |= {f"Task.Param.{one['name']}" for one in space}
        known |= {f"Task.File.{one['name']}" for one in step["script"].get("embeddedFiles", [])}
        for name in references(step):
            if name not in known:
                raise WrongTemplate(f"{path}: step {step['name']}: {{{{{name}}}}} is not defined")
        for dependency in step.get("dependencies", []):
            if dependency["dependsOn"] not in steps:
                raise WrongTemplate(f"{path}: step {step['name']}: no earlier step {dependency['dependsOn']}")
        steps.append(step["name"])


def expand(text, values):
    return re.sub(r"\{\{(.*?)\}\}", lambda match: str(values[match.group(1).strip()]), text)


def integers(text):
    """A range expression such as 1-10:3,15."""
    for item in text.split(","):
        first, last, step = re.fullmatch(r"\s*(-?\d+)(?:-(-?\d+))?(?::(\d+))?\s*", item).groups()
        yield from range(int(first), int(last or first) + 1, int(step or 1))


def tasks(step, values):
    """The values of the task parameters of each task."""
    space = step.get("parameterSpace", {}).get("taskParameterDefinitions", [])
    columns = []
    for parameter in space:
        span = parameter["range"]
        if isinstance(span, str):
            span = list(integers(expand(span, values)))
        columns.append([(f"Task.Param.{parameter['name']}", value) for value in span])
    return [dict(row) for row in itertools.product(*columns)]


def run_task(script, values, directory):
    for embedded in script.get("embeddedFiles", []):
        path = os.path.join(directory, embedded["name"])
        values[f"Task.File.{embedded['name']}"] = path
        with open(path, "w", encoding="utf-8") as file:
            file.write(expand(embedded["data"], values))
    action = script["actions"]["onRun"]
    command = [expand(word, values) for word in [action["command"], *action.get("args", [])]]
    print("task:", " ".join(command), flush=True)
    return subprocess.run(command, timeout=action.get("timeout"), check=False).returncode


def run(path, settings):
    template = load(path)
    values = {f"Param.{one['name']}": one.get("default") for one in template["parameterDefinitions"]}
    for setting in settings:
        name, value = setting.split("=", 1)
        if f"Param.{name}" not in values:
            raise WrongTemplate(f"{path}: no parameter {name}")
        values[f"Param.{name}"] = value
    for step in template["steps"]:
        for task in tasks(step, values):
            with tempfile.TemporaryDirectory() as directory:
                status = run_task(step["script"], values | task, directory)
            if status != 0:
                raise WrongTemplate(f"{path}: a task of step {step['name']} ended with status {status}")


def main(words):
    try:
        if words[:1] == ["check"] and len(words) > 1:
            for path in words[1:]:
                load(path)
        elif words[:1] == ["run"] and len(words) > 1:
            run(words[1], words[2:])
        else:
            print(__doc__, file=sys.stderr)
            return 2
    except (OSError, WrongTemplate, yaml.YAMLError) as error:
        print(f"openjd.py: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
