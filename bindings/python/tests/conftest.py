import pathlib

import pytest

import vekdb

SAMPLES = pathlib.Path(__file__).resolve().parents[3] / "samples"


@pytest.fixture
def docs() -> vekdb.Log:
    return vekdb.open(SAMPLES / "docs.vek")


@pytest.fixture
def dailies() -> vekdb.Log:
    return vekdb.open(SAMPLES / "dailies.vek")


@pytest.fixture
def samples() -> pathlib.Path:
    return SAMPLES
