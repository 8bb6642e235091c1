# -*- coding: utf-8 -*-
# Copyright (c) 2026 Velmora
# MIT License (see LICENSE at the top of the Korvane repository)

"""What the korvane modules share: KorvaneCMD's argument lists and the reading of its answers.

Pure functions of the modules' parameters, so that their unit tests need no AnsibleModule.
Every command is an argument list for module.run_command: no shell ever sees a name.
"""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json

# KorvaneCMD's exit statuses: done (or with --check: nothing pending), a failure, a wrong command
# line or an unreadable input, and with --check moves pending.
EXIT_DONE = 0
EXIT_FAILED = 1
EXIT_USAGE = 2
EXIT_WOULD_MOVE = 3

COMMON_ARGUMENT_SPEC = dict(
    root=dict(type='path'),
    home=dict(type='path'),
    korvanecmd=dict(type='path'),
)


def roots(params):
    """--root and --home as KorvaneCMD takes them; inline, so a folder named like an option
    stays a folder."""
    args = []
    if params.get('root'):
        args.append('--root=' + params['root'])
    if params.get('home'):
        args.append('--home=' + params['home'])
    return args


def wanted_state_problem(params):
    """Why korvane_set's parameters name no wanted state, or None when they do."""
    if params.get('set') is not None:
        if params.get('enabled') is not None or params.get('disabled') is not None \
                or params.get('only'):
            return 'set cannot be combined with enabled, disabled or only'
        return None
    if params.get('enabled') is None and params.get('disabled') is None \
            and not params.get('only'):
        return 'one of set, enabled, disabled or only is required'
    both = sorted(set(params.get('enabled') or []) & set(params.get('disabled') or []))
    if both:
        return 'named both enabled and disabled: %s' % ', '.join(both)
    return None


def set_command(korvanecmd, params, check_mode):
    """KorvaneCMD's arguments for korvane_set: a set document, or the lists of names."""
    args = [korvanecmd, '--json'] + roots(params)
    if check_mode:
        args.append('--check')
    if params.get('set') is not None:
        # "-au SET", in the format's own option.
        return args + ['-' + params['format'], params['set']]
    args += ['apply', '--format=' + params['format']]
    # Inline as well: a plug-in may be named "-Odd.vst".
    args += ['--on=' + name for name in params.get('enabled') or []]
    args += ['--off=' + name for name in params.get('disabled') or []]
    if params.get('only'):
        args.append('--only')
    return args


def facts_command(korvanecmd, params):
    """KorvaneCMD's arguments for korvane_facts: the list as JSON, of one format or all."""
    args = [korvanecmd] + roots(params) + ['list', '--json']
    if params.get('format'):
        args.append('--format=' + params['format'])
    return args


def parse_report(stdout):
    """A mover's JSON object, or None when KorvaneCMD printed none (a wrong command line)."""
    try:
        report = json.loads(stdout)
    except ValueError:
        return None
    return report if isinstance(report, dict) else None


def failure_message(rc, report, stderr):
    """What went wrong, in KorvaneCMD's own words: its errors, else its first line on standard
    error, else the exit status."""
    if report and report.get('errors'):
        return '; '.join(report['errors'])
    for line in (stderr or '').splitlines():
        if line.strip():
            return line.strip()
    return 'KorvaneCMD exited with status %d' % rc


def succeeded(rc, check_mode):
    """Whether KorvaneCMD's exit status means it did what was asked (with --check, 3 only says
    that moves are pending)."""
    return rc == EXIT_DONE or (check_mode and rc == EXIT_WOULD_MOVE)


def on_names(report, key, format_prefix):
    """The names of the plug-ins that are on, before or after, of the report's format."""
    lists = report.get(key) or {}
    for prefix, names in lists.items():
        if prefix.lower() == format_prefix.lower():
            return names
    return []


def diff_of(report, format_prefix):
    """Ansible's diff: the plug-ins on before and after, one name a line."""
    before = on_names(report, 'before', format_prefix)
    after = on_names(report, 'after', format_prefix)
    label = '%s plug-ins on' % format_prefix.upper()
    return dict(before=''.join(name + '\n' for name in before),
                after=''.join(name + '\n' for name in after),
                before_header=label + ' before', after_header=label + ' after')
