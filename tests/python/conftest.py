import os

import pytest


@pytest.fixture(scope="session")
def program():
    return os.environ["AVEFFECT_PROGRAM"]
