# -*- coding: utf-8 -*-
# Copyright (c) 2026 Velmora
# MIT License (see LICENSE at the top of the Korvane repository)

"""The modules' argument handling: which parameters name a wanted state, the argument lists
KorvaneCMD gets, and how its answers become a message."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json
import unittest

from ansible_collections.korvane.plugins.plugins.module_utils import korvane


def params(**given):
    base = dict(format='au', set=None, enabled=None, disabled=None, only=False, root=None,
                home=None, korvanecmd=None)
    base.update(given)
    return base


class WantedStateTest(unittest.TestCase):

    def test_a_wanted_state_is_a_set_or_names_never_both(self):
        for given in (dict(set='/s.aukorv'), dict(enabled=['A']), dict(disabled=['B']),
                      dict(only=True), dict(enabled=[], only=True), dict(enabled=['A', 'A'])):
            self.assertIsNone(korvane.wanted_state_problem(params(**given)), given)
        for given, problem in (
                (dict(), 'one of set, enabled, disabled or only is required'),
                (dict(set='/s', enabled=['A']), 'set cannot be combined'),
                (dict(set='/s', disabled=[]), 'set cannot be combined'),
                (dict(set='/s', only=True), 'set cannot be combined'),
                (dict(enabled=['A', 'B'], disabled=['B', 'A']),
                 'named both enabled and disabled: A, B')):
            self.assertIn(problem, korvane.wanted_state_problem(params(**given)) or '', given)


class CommandTest(unittest.TestCase):

    def test_names_and_folders_reach_korvanecmd_inline_whatever_they_look_like(self):
        # A name or folder like an option stays a value; nothing is quoted, as no shell reads it.
        command = korvane.set_command('/bin/KorvaneCMD', params(
            format='vst', enabled=['-Odd.vst', 'Two words'], disabled=["It's $(x)"], only=True,
            root='--json', home='/h'), check_mode=False)
        self.assertEqual(command, ['/bin/KorvaneCMD', '--json', '--root=--json', '--home=/h',
                                   'apply', '--format=vst', '--on=-Odd.vst', '--on=Two words',
                                   "--off=It's $(x)", '--only'])

    def test_a_set_document_goes_with_its_formats_option_and_check_mode_with_check(self):
        self.assertEqual(
            korvane.set_command('K', params(format='rtas', set='/s/Live.rtaskorv'), True),
            ['K', '--json', '--check', '-rtas', '/s/Live.rtaskorv'])
        self.assertEqual(korvane.set_command('K', params(only=True), True),
                         ['K', '--json', '--check', 'apply', '--format=au', '--only'])


class AnswerTest(unittest.TestCase):

    REPORT = dict(changed=True, check=True, moves=[], warnings=[], errors=[],
                  before={'AU': ['A.component']}, after={'AU': []})

    def test_the_message_is_korvanecmds_own_errors_else_its_first_line(self):
        report = dict(self.REPORT, errors=['KorvaneCMD: no AU plug-in named "Nope"',
                                           'KorvaneCMD: nothing changed'])
        self.assertEqual(korvane.failure_message(1, report, 'ignored'),
                         'KorvaneCMD: no AU plug-in named "Nope"; KorvaneCMD: nothing changed')
        self.assertEqual(
            korvane.failure_message(2, None, '\nKorvaneCMD: unknown format "wav"\nTry it.\n'),
            'KorvaneCMD: unknown format "wav"')
        self.assertEqual(korvane.failure_message(-9, None, ''),
                         'KorvaneCMD exited with status -9')

    def test_a_report_is_read_only_when_it_is_an_object(self):
        self.assertEqual(korvane.parse_report(json.dumps(self.REPORT)), self.REPORT)
        for text in ('', 'disabled A.component\n', '[]', '{"changed": tr'):
            self.assertIsNone(korvane.parse_report(text), text)


if __name__ == '__main__':
    unittest.main()
