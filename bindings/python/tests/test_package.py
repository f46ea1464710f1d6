"""What is built stands in a wheel, and what the documents show is what happens."""

import doctest
import importlib.util
import pathlib
import re
import shutil
import subprocess
import sys
import zipfile
from typing import List

import pytest

import vekdb

ROOT = pathlib.Path(__file__).resolve().parents[3]


def test_a_wheel_has_all_that_is_needed(tmp_path: pathlib.Path) -> None:
    spec = importlib.util.spec_from_file_location(
        "build_wheel", ROOT / "bindings/python/build_wheel.py"
    )
    assert spec is not None and spec.loader is not None
    builder = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(builder)
    package = pathlib.Path(str(vekdb.__file__)).parent
    wheel = tmp_path / builder.make_wheel(package, tmp_path)
    with zipfile.ZipFile(wheel) as archive:
        names = set(archive.namelist())
        assert {"vekdb/py.typed", "vekdb/__init__.pyi"} < names
        assert any(name.endswith("/RECORD") for name in names)
        archive.extractall(tmp_path / "installed")
    code = "import vekdb; print(vekdb.__file__); print(len(vekdb.loads('A\\n1\\n', 'a.csv')))"
    place = str(tmp_path / "installed")
    ran = subprocess.run(
        [sys.executable, "-I", "-c", f"import sys; sys.path.insert(0, {place!r}); {code}"],
        capture_output=True,
        text=True,
        check=True,
    )
    assert ran.stdout == f"{tmp_path / 'installed/vekdb/__init__.py'}\n1\n"


def test_the_tour_shows_what_happens(
    tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    shutil.copytree(ROOT / "samples", tmp_path / "samples")
    monkeypatch.chdir(tmp_path)
    text = (ROOT / "docs/python.md").read_text()
    blocks = re.findall(r"```pycon\n(.*?)```", text, re.DOTALL)
    assert len(blocks) > 5
    session = doctest.DocTestParser().get_doctest(
        "\n".join(blocks), {}, "docs/python.md", "docs/python.md", 0
    )
    said: List[str] = []
    runner = doctest.DocTestRunner(verbose=False, optionflags=doctest.ELLIPSIS)
    results = runner.run(session, out=said.append)
    assert results.attempted > 20
    assert results.failed == 0, "".join(said)


def test_the_stubs_name_what_is_there() -> None:
    import ast

    package = pathlib.Path(str(vekdb.__file__)).parent
    tree = ast.parse((package / "__init__.pyi").read_text())
    for node in tree.body:
        if isinstance(node, ast.ClassDef) and not node.name.startswith("_"):
            real = getattr(vekdb, node.name)
            named = {part.name for part in node.body if isinstance(part, ast.FunctionDef)}
            for name in named:
                assert hasattr(real, name), f"{node.name}.{name}"
            public = {name for name in vars(real) if not name.startswith("_")}
            annotated = {
                part.target.id
                for part in node.body
                if isinstance(part, ast.AnnAssign) and isinstance(part.target, ast.Name)
            }
            assert public <= named | annotated, node.name
