"""Drives the real program from outside: used by quickstart and by the end-to-end tests."""
