import os
import pathlib

import numpy as np
import pytest
from hypothesis import HealthCheck, settings

settings.register_profile(
    "gridwork",
    max_examples=40,
    deadline=None,
    derandomize=True,
    database=None,
    suppress_health_check=[HealthCheck.too_slow, HealthCheck.function_scoped_fixture],
)
settings.load_profile("gridwork")

MESHES = pathlib.Path(os.environ.get("QEL_TEST_MESHES", "."))


@pytest.fixture
def rng():
    return np.random.default_rng(7)


@pytest.fixture(scope="session")
def meshes():
    """The folder of sample meshes."""
    if not MESHES.joinpath("INDEX.md").exists():
        pytest.skip("the sample meshes are not there")
    return MESHES


@pytest.fixture(scope="session")
def lattice():
    """Tetrahedra of a cube of 6 x 6 x 6 cells, with the orientation that is positive here."""
    from meshes import tetrahedra

    return tetrahedra(6)
