"""The collection's code and documentation as Ansible's own tools check them, offline.

ansible-test sanity runs every test that needs nothing but ansible-core. Seven of its tests
install pinned Python packages into a virtual environment from PyPI first, which this machine
cannot reach; ansible-doc is run directly instead, and pep8 and yamllint run Debian's
pycodestyle and yamllint with ansible-test's own settings. The others (import, pylint,
runtime-metadata, validate-modules) are not run here.
"""

import ast
import glob
import os
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import unittest

import yaml

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.dirname(os.path.dirname(HERE))
COLLECTIONS = os.path.join(SOURCE, 'integrations', 'ansible')
COLLECTION = os.path.join(COLLECTIONS, 'ansible_collections', 'korvane', 'plugins')

NEEDS_PYPI = {'ansible-doc', 'import', 'pep8', 'pylint', 'runtime-metadata', 'validate-modules',
              'yamllint'}


def ansible_test_settings(name):
    """A file of ansible-test's own sanity settings, from the installed ansible-core."""
    import ansible_test  # pylint: disable=import-outside-toplevel
    return os.path.join(os.path.dirname(ansible_test.__file__), '_util', 'controller', 'sanity',
                        name)


class SanityTest(unittest.TestCase):

    def setUp(self):
        self.dir = tempfile.mkdtemp(prefix='korvane-ansible-sanity-')
        self.addCleanup(shutil.rmtree, self.dir)
        self.env = dict(os.environ, HOME=self.dir, ANSIBLE_HOME=self.dir,
                        ANSIBLE_LOCAL_TEMP=self.dir, ANSIBLE_COLLECTIONS_PATH=COLLECTIONS)

    def run_tool(self, args, cwd=None):
        run = subprocess.run(args, env=self.env, cwd=cwd, capture_output=True, text=True,
                             timeout=600, check=False)
        self.assertEqual(run.returncode, 0, ' '.join(args) + '\n' + run.stdout + run.stderr)
        return run

    def test_ansible_test_sanity_passes_every_test_it_can_run_offline(self):
        # On a copy: ansible-test writes its results into the collection.
        copy = os.path.join(self.dir, 'ansible_collections', 'korvane', 'plugins')
        shutil.copytree(COLLECTION, copy,
                        ignore=shutil.ignore_patterns('__pycache__', 'output'))
        listed = self.run_tool(['ansible-test', 'sanity', '--list-tests'], cwd=copy)
        tests = [name for name in listed.stdout.split() if name not in NEEDS_PYPI]
        self.assertGreater(len(tests), 20, listed.stdout)
        # This Python only: with "default" the compile test wants every version ansible-core
        # supports, Python 2.7 too.
        args = ['ansible-test', 'sanity', '--python', '%d.%d' % sys.version_info[:2]]
        for name in tests:
            args += ['--test', name]
        self.run_tool(args, cwd=copy)

    def test_ansible_doc_reads_each_modules_documentation(self):
        for module in ('korvane_set', 'korvane_facts'):
            run = self.run_tool(['ansible-doc', 'korvane.plugins.' + module])
            self.assertEqual(run.stderr, '')
            for part in ('OPTIONS', 'ATTRIBUTES', 'EXAMPLES', 'RETURN VALUES'):
                self.assertIn(part, run.stdout)

    def test_ansible_galaxy_builds_the_collection_with_both_modules(self):
        self.run_tool(['ansible-galaxy', 'collection', 'build', '--output-path', self.dir],
                      cwd=COLLECTION)
        package = os.path.join(self.dir, 'korvane-plugins-1.0.0.tar.gz')
        with tarfile.open(package) as archive:
            names = archive.getnames()
        for module in ('korvane_set', 'korvane_facts'):
            self.assertIn('plugins/modules/%s.py' % module, names)
        self.assertIn('plugins/module_utils/korvane.py', names)

    def test_pep8_and_yamllint_as_ansible_test_runs_them(self):
        ignored = ansible_test_settings(os.path.join('pep8', 'current-ignore.txt'))
        with open(ignored, encoding='utf-8') as file:
            codes = ','.join(line.strip() for line in file if line.strip())
        self.run_tool(['pycodestyle', '--max-line-length', '160', '--ignore', codes,
                       COLLECTIONS, HERE])
        documents = sorted(glob.glob(os.path.join(COLLECTION, '**', '*.yml'), recursive=True)
                           + glob.glob(os.path.join(HERE, '**', '*.yml'), recursive=True))
        self.assertGreaterEqual(len(documents), 4)
        self.run_tool(['yamllint', '--strict', '-c',
                       ansible_test_settings(os.path.join('yamllint', 'config', 'default.yml'))]
                      + documents)


class FormatOptionTest(unittest.TestCase):
    """The format option's documentation names every format KorvaneCMD knows, so a new format
    row cannot be left out of it again."""

    @staticmethod
    def names_korvanecmd_knows():
        korvanecmd = os.environ.get('KORVANE_CMD', '')
        if not korvanecmd:
            raise AssertionError('KORVANE_CMD must name the built KorvaneCMD')
        # An unknown format is answered with the list of every known one.
        run = subprocess.run([korvanecmd, 'list', '--format=no-such-format'],
                             capture_output=True, text=True, timeout=60, check=False)
        match = re.search(r'\(use (.*)\)', run.stderr)
        if run.returncode != 2 or not match:
            raise AssertionError('unexpected answer: %r' % run.stderr)
        return set(re.split(r', | or ', match.group(1)))

    @staticmethod
    def documented_names(module):
        path = os.path.join(COLLECTION, 'plugins', 'modules', module + '.py')
        with open(path, encoding='utf-8') as file:
            tree = ast.parse(file.read())
        for node in tree.body:
            if isinstance(node, ast.Assign) and node.targets[0].id == 'DOCUMENTATION':
                options = yaml.safe_load(node.value.value)['options']
                text = ' '.join(options['format']['description'])
                return set(re.findall(r'C\(([a-z0-9-]+)\)', text)) - {'KorvaneCMD'}
        raise AssertionError('%s has no DOCUMENTATION' % path)

    def test_each_modules_format_option_lists_every_format_korvanecmd_knows(self):
        known = self.names_korvanecmd_knows()
        self.assertTrue({'au', 'vst', 'lv2', 'lxvst', 'aax'} <= known, known)
        for module in ('korvane_set', 'korvane_facts'):
            self.assertEqual(self.documented_names(module), known, module)


if __name__ == '__main__':
    unittest.main()
