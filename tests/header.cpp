// Holds nothing: the target of this file has the precompiled header of all tests.
