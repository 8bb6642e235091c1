"""Runs the Ansible collection's tests as one CTest test: the modules' unit tests (in the
collection, importable uninstalled from integrations/ansible), the checks of its code and
documentation (test_sanity.py) and the playbooks against localhost (test_playbooks.py). Exits
non-zero when any test fails."""

import os
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
COLLECTIONS = os.path.join(os.path.dirname(os.path.dirname(HERE)), 'integrations', 'ansible')
UNIT = os.path.join(COLLECTIONS, 'ansible_collections', 'korvane', 'plugins', 'tests', 'unit')


def main():
    try:
        import ansible  # noqa: F401  pylint: disable=unused-import,import-outside-toplevel
    except ImportError:
        sys.exit('%s cannot import ansible: tools/setup.sh installs ansible-core' % sys.executable)
    sys.path.insert(0, COLLECTIONS)
    sys.path.insert(0, HERE)
    loader = unittest.TestLoader()
    suite = unittest.TestSuite()
    for folder, _, files in sorted(os.walk(UNIT)):
        for name in sorted(files):
            if name.startswith('test_') and name.endswith('.py'):
                sys.path.insert(0, folder)
                suite.addTests(loader.loadTestsFromName(name[:-3]))
    suite.addTests(loader.loadTestsFromName('test_sanity'))
    suite.addTests(loader.loadTestsFromName('test_playbooks'))
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    failed = len(result.failures) + len(result.errors)
    passed = result.testsRun - failed - len(result.skipped)
    print('%d passed, %d failed, %d skipped' % (passed, failed, len(result.skipped)))
    sys.exit(0 if result.wasSuccessful() else 1)


if __name__ == '__main__':
    main()
