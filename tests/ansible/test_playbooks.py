"""The korvane.plugins collection at work: ansible-playbook against localhost, on demo plug-in
libraries that korvane_demo builds in temporary folders. Nothing outside those folders is
touched: Ansible's own home, temporary files and configuration live there too.

KORVANE_CMD and KORVANE_DEMO name the built programs (CTest sets both).
"""

import hashlib
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.dirname(os.path.dirname(HERE))
COLLECTIONS = os.path.join(SOURCE, 'integrations', 'ansible')
COLLECTION = os.path.join(COLLECTIONS, 'ansible_collections', 'korvane', 'plugins')
PLAYBOOKS = os.path.join(HERE, 'playbooks')
KORVANE_CMD = os.environ.get('KORVANE_CMD', '')
KORVANE_DEMO = os.environ.get('KORVANE_DEMO', '')

AU = 'Library/Audio/Plug-Ins/Components'
AU_OFF = 'Library/Audio/Plug-Ins/Components (Disabled)'
VST_OFF = 'Library/Audio/Plug-Ins/VST (Disabled)'


class AnsibleOnDemoLibrary(unittest.TestCase):
    """A demo library under root/ and home/ of a fresh temporary folder, and ansible-playbook
    confined to that folder."""

    def setUp(self):
        if not (KORVANE_CMD and KORVANE_DEMO):
            self.fail('KORVANE_CMD and KORVANE_DEMO must name the built programs')
        if shutil.which('ansible-playbook') is None:
            self.fail('ansible-playbook is missing: tools/setup.sh installs ansible-core')
        self.dir = tempfile.mkdtemp(prefix='korvane-ansible-')
        self.addCleanup(shutil.rmtree, self.dir)
        subprocess.run([KORVANE_DEMO, os.path.join(self.dir, 'library')], check=True,
                       stdout=subprocess.DEVNULL)
        self.root = os.path.join(self.dir, 'library', 'root')
        self.home = os.path.join(self.dir, 'library', 'home')
        self.ansible = os.path.join(self.dir, 'ansible')
        os.mkdir(self.ansible)
        self.config = os.path.join(self.ansible, 'ansible.cfg')
        with open(self.config, 'w', encoding='utf-8'):
            pass
        self.result_file = os.path.join(self.ansible, 'result.json')

    def environment(self, home=None):
        env = dict(os.environ)
        env.update(
            HOME=home or self.ansible,
            ANSIBLE_HOME=os.path.join(self.ansible, 'home'),
            ANSIBLE_LOCAL_TEMP=os.path.join(self.ansible, 'tmp'),
            ANSIBLE_REMOTE_TEMP=os.path.join(self.ansible, 'remote-tmp'),
            ANSIBLE_CONFIG=self.config,
            ANSIBLE_COLLECTIONS_PATH=COLLECTIONS,
            ANSIBLE_NOCOLOR='1',
            ANSIBLE_RETRY_FILES_ENABLED='0',
        )
        env.pop('KORVANE_ROOT', None)
        return env

    def run_playbook(self, playbook, extra_vars, options=(), inventory='localhost,', env=None):
        extra_vars = dict(extra_vars, ansible_python_interpreter=sys.executable)
        args = ['ansible-playbook', '-i', inventory, '-c', 'local', playbook,
                '-e', json.dumps(extra_vars)] + list(options)
        return subprocess.run(args, env=env or self.environment(), cwd=self.ansible,
                              capture_output=True, text=True, timeout=300, check=False)

    def play(self, playbook, wanted, options=()):
        """Runs one of the test playbooks with these options and returns the result it kept."""
        if os.path.exists(self.result_file):
            os.remove(self.result_file)
        extra_vars = dict(wanted, korvane_root=self.root, korvane_home=self.home,
                          korvanecmd=KORVANE_CMD, result_file=self.result_file)
        run = self.run_playbook(os.path.join(PLAYBOOKS, playbook), extra_vars, options)
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        with open(self.result_file, encoding='utf-8') as result:
            return json.load(result)

    def tree(self):
        """Every entry under both roots: path, size, modification time, and a digest of each
        file's contents."""
        entries = []
        for top in (self.root, self.home):
            for folder, folders, files in os.walk(top):
                for name in sorted(folders + files):
                    path = os.path.join(folder, name)
                    info = os.lstat(path)
                    digest = ''
                    if os.path.isfile(path) and not os.path.islink(path):
                        with open(path, 'rb') as data:
                            digest = hashlib.sha256(data.read()).hexdigest()
                    entries.append((path, info.st_size, info.st_mtime_ns, digest))
        return sorted(entries)

    def on_disk(self, base, folder, name):
        return os.path.isdir(os.path.join(base, folder, name))


def moves_of(result):
    return [(move['name'], move['action'], move['from'], move['to'])
            for move in result['moves']]


class KorvaneSetTest(AnsibleOnDemoLibrary):

    COURSE = dict(wanted_format='au', wanted_on=['Aurora Synth', 'Cinder Reverb',
                                                 'Granite Pad.component'], wanted_only=True)

    def test_check_mode_changes_nothing_then_a_run_changes_and_a_second_changes_nothing(self):
        untouched = self.tree()
        checked = self.play('korvane_set.yml', self.COURSE, ['--check', '--diff'])
        self.assertTrue(checked['changed'])
        self.assertEqual({move['outcome'] for move in checked['moves']}, {'would'})
        self.assertEqual(self.tree(), untouched)
        # Basalt, Delta and Ember go off; the two copies of Aurora, Cinder and Granite stay on.
        self.assertIn('Basalt Compressor.component\n', checked['diff']['before'])
        self.assertNotIn('Basalt Compressor.component\n', checked['diff']['after'])
        self.assertEqual(checked['diff']['after'],
                         'Aurora Synth.component\nAurora Synth.component\n'
                         'Cinder Reverb.component\nGranite Pad.component\n')

        done = self.play('korvane_set.yml', self.COURSE, ['--diff'])
        self.assertTrue(done['changed'])
        self.assertEqual(moves_of(done), moves_of(checked))
        self.assertEqual({move['outcome'] for move in done['moves']}, {'done'})
        self.assertEqual(done['diff'], checked['diff'])
        self.assertEqual(done['after'], checked['after'])
        self.assertTrue(self.on_disk(self.root, AU_OFF, 'Basalt Compressor.component'))
        self.assertTrue(self.on_disk(self.home, AU_OFF, 'Harbor Limiter.component'))
        self.assertTrue(self.on_disk(self.root, AU, 'Cinder Reverb.component'))

        applied = self.tree()
        for options in (['--check'], []):
            again = self.play('korvane_set.yml', self.COURSE, options)
            self.assertFalse(again['changed'], options)
            self.assertEqual(again['moves'], [])
        self.assertEqual(self.tree(), applied)

    def test_a_set_document_applies_once_and_says_what_it_lacks(self):
        live = dict(wanted_format='au',
                    wanted_set=os.path.join(self.home, 'Documents', 'Live.aukorv'))
        first = self.play('korvane_set.yml', live)
        self.assertTrue(first['changed'])
        self.assertEqual(sorted(move['name'] for move in first['moves']),
                         ['Basalt Compressor.component', 'Ember EQ.component',
                          'Fjord Chorus.component', 'Harbor Limiter.component'])
        self.assertTrue(any('Zephyr Vocoder.component' in warning
                            for warning in first['warnings']), first.get('warnings'))
        # Ember's presets went with it.
        self.assertTrue(self.on_disk(self.root, AU_OFF, 'Ember EQ Presets'))
        self.assertFalse(self.play('korvane_set.yml', live)['changed'])

    def test_each_failure_fails_with_its_message_and_moves_nothing(self):
        live = os.path.join(self.home, 'Documents', 'Live.aukorv')
        cases = [
            (dict(wanted_format='au', wanted_set=os.path.join(self.home, 'none.aukorv')),
             'AU set "%s": No such file or directory' % os.path.join(self.home, 'none.aukorv')),
            (dict(wanted_format='wav', wanted_on=['Aurora Synth']), 'unknown format "wav"'),
            (dict(wanted_format='wav', wanted_set=live), 'no format is named "wav"'),
            (dict(wanted_format='au', wanted_on=['Aurora Synth', 'Nope']),
             'no AU plug-in named "Nope"'),
            (dict(wanted_format='au', wanted_on=['Nope'], wanted_only=True),
             'no AU plug-in named "Nope"'),
            (dict(wanted_format='au', wanted_set=live, wanted_off=['Aurora Synth']),
             'set cannot be combined'),
            (dict(wanted_format='au'), 'one of set, enabled, disabled or only is required'),
            (dict(wanted_format='au', wanted_on=['Granite Pad'], wanted_off=['Granite Pad']),
             'named both enabled and disabled: Granite Pad'),
        ]
        untouched = self.tree()
        for wanted, message in cases:
            for options in ([], ['--check']):
                with self.subTest(wanted=wanted, options=options):
                    result = self.play('korvane_set.yml', wanted, options)
                    self.assertTrue(result.get('failed'), result)
                    self.assertIn(message, result['msg'])
                    self.assertFalse(result['changed'])
        self.assertEqual(self.tree(), untouched)

        missing = dict(self.COURSE)
        run = self.run_playbook(os.path.join(PLAYBOOKS, 'korvane_set.yml'), dict(
            missing, korvane_root=self.root, korvane_home=self.home,
            korvanecmd=os.path.join(self.dir, 'nowhere', 'KorvaneCMD'),
            result_file=self.result_file))
        with open(self.result_file, encoding='utf-8') as kept:
            self.assertIn('No such file or directory', json.load(kept)['msg'], run.stdout)

    def test_a_move_that_fails_fails_the_task_naming_the_plugin(self):
        locked = os.path.join(self.root, AU_OFF)
        os.makedirs(locked, exist_ok=True)
        if subprocess.run(['chattr', '+i', locked], capture_output=True,
                          check=False).returncode != 0:
            self.skipTest('chattr +i is not supported here')
        self.addCleanup(subprocess.run, ['chattr', '-i', locked], check=False)
        basalt = dict(wanted_format='au', wanted_off=['Basalt Compressor', 'Granite Pad'])
        for options in (['--check'], []):
            result = self.play('korvane_set.yml', basalt, options)
            self.assertTrue(result.get('failed'), result)
            self.assertIn('could not disable "Basalt Compressor.component"', result['msg'])
        # The user's Granite Pad moved all the same; Basalt stayed where it was.
        self.assertEqual([(move['name'], move['outcome']) for move in result['moves']],
                         [('Basalt Compressor.component', 'failed'),
                          ('Granite Pad.component', 'done')])
        self.assertTrue(self.on_disk(self.root, AU, 'Basalt Compressor.component'))
        self.assertTrue(self.on_disk(self.home, AU_OFF, 'Granite Pad.component'))


class KorvaneFactsTest(AnsibleOnDemoLibrary):

    def test_facts_list_the_plugins_as_korvanecmd_does(self):
        listed = subprocess.run([KORVANE_CMD, '--root', self.root, '--home', self.home, 'list',
                                 '--json'], capture_output=True, text=True, check=True)
        untouched = self.tree()
        every = self.play('korvane_facts.yml', {}, ['--check'])
        self.assertEqual(every['facts'], json.loads(listed.stdout))
        self.assertFalse(every['outcome']['changed'])
        vst = self.play('korvane_facts.yml', dict(wanted_format='vst'))['facts']
        self.assertEqual(sorted(plugin['name'] for plugin in vst),
                         ['Iris Pad.vst', 'Iris Pad.vst', 'Jade Flanger.vst', 'Kestrel Bass',
                          'Lumen Phaser.vst', 'Mosaic/Mosaic Drums.vst', 'Nova Tape'])
        self.assertEqual(self.tree(), untouched)
        wrong = self.play('korvane_facts.yml', dict(wanted_format='wav'))['outcome']
        self.assertTrue(wrong['failed'])
        self.assertIn('unknown format "wav"', wrong['msg'])


class RoomExampleTest(AnsibleOnDemoLibrary):
    """The collection's example playbook, as it stands, on a machine of room_a: KorvaneCMD from
    PATH and its roots from the environment, as on a real machine."""

    def test_the_room_example_brings_a_machine_to_the_rooms_plugins_once(self):
        inventory = os.path.join(self.ansible, 'inventory.ini')
        with open(inventory, 'w', encoding='utf-8') as file:
            file.write('[room_a]\nlocalhost ansible_connection=local\n')
        env = self.environment(home=self.home)
        env['KORVANE_ROOT'] = self.root
        env['PATH'] = os.path.dirname(KORVANE_CMD) + os.pathsep + env.get('PATH', '')
        example = os.path.join(COLLECTION, 'examples', 'room.yml')
        # Tests run as root already; become would ask sudo for nothing.
        no_become = {'ansible_become': False}
        recaps = []
        for _ in range(2):
            run = self.run_playbook(example, no_become, inventory=inventory, env=env)
            self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
            recaps.append([line for line in run.stdout.splitlines()
                           if line.startswith('localhost')][-1])
        self.assertIn('changed=2', recaps[0])
        self.assertIn('changed=0', recaps[1])
        self.assertTrue(self.on_disk(self.root, AU_OFF, 'Delta Delay.component'))
        self.assertTrue(self.on_disk(self.root, VST_OFF, 'Jade Flanger.vst'))
        self.assertTrue(self.on_disk(self.home, AU, 'Granite Pad.component'))


if __name__ == '__main__':
    unittest.main()
