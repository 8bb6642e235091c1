#!/usr/bin/python
# -*- coding: utf-8 -*-
# Copyright (c) 2026 Velmora
# MIT License (see LICENSE at the top of the Korvane repository)

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r'''
---
module: korvane_facts
short_description: The installed audio plug-ins, as KorvaneCMD lists them
version_added: 1.0.0
description:
  - Runs C(KorvaneCMD list --json) with an argument list (never through a shell) and returns
    every installed plug-in of one format, or of all, as the fact C(korvane_plugins).
  - Listing changes nothing on disk and never waits for another program moving plug-ins.
author:
  - Velmora (@velmora)
options:
  format:
    description:
      - Only the plug-ins of this format, as C(KorvaneCMD) names it (in any case), one of
        C(au), C(rtas), C(mas) or C(vst); on Linux C(lv2), C(vst3), C(clap), C(ladspa),
        C(dssi) or C(lxvst) (Linux VST 2); in the macOS layout C(vst3-mac), C(clap-mac),
        C(lv2-mac) or C(aax).
        Default is every format.
    type: str
extends_documentation_fragment:
  - korvane.plugins.korvane
  - ansible.builtin.action_common_attributes
  - ansible.builtin.action_common_attributes.facts
attributes:
  check_mode:
    support: full
  diff_mode:
    support: none
  facts:
    support: full
  platform:
    platforms: posix
seealso:
  - module: korvane.plugins.korvane_set
'''

EXAMPLES = r'''
- name: Learn the Audio Units installed
  korvane.plugins.korvane_facts:
    format: au

- name: Show the ones that are on
  ansible.builtin.debug:
    msg: "{{ ansible_facts.korvane_plugins | selectattr('active') | map(attribute='name') | list }}"
'''

RETURN = r'''
ansible_facts:
  description: The facts this module sets.
  returned: always
  type: complex
  contains:
    korvane_plugins:
      description: Every plug-in found, as C(KorvaneCMD list --json) gives it.
      returned: always
      type: list
      elements: dict
      contains:
        format:
          description: The format, as Korvane writes it.
          type: str
          sample: AU
        name:
          description: The plug-in's file name.
          type: str
          sample: Aurora Synth.component
        location:
          description: The folder it lies in.
          type: str
          sample: /Library/Audio/Plug-Ins/Components
        global:
          description: Whether it is installed system-wide (else for the user).
          type: bool
          sample: true
        active:
          description: Whether it is on.
          type: bool
          sample: true
        group:
          description: Its group in Korvane, or an empty string.
          type: str
          sample: Synths
        architecture:
          description: The architectures of its code, as Korvane names them.
          type: str
          sample: Universal Binary
'''

import json

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.korvane.plugins.plugins.module_utils.korvane import (
    COMMON_ARGUMENT_SPEC, facts_command, failure_message)


def main():
    argument_spec = dict(format=dict(type='str'))
    argument_spec.update(COMMON_ARGUMENT_SPEC)
    module = AnsibleModule(argument_spec=argument_spec, supports_check_mode=True)
    korvanecmd = module.params['korvanecmd'] or module.get_bin_path('KorvaneCMD', required=True)

    rc, stdout, stderr = module.run_command(facts_command(korvanecmd, module.params))
    if rc != 0:
        module.fail_json(msg=failure_message(rc, None, stderr), rc=rc, stderr=stderr)
    try:
        plugins = json.loads(stdout)
    except ValueError as error:
        module.fail_json(msg='KorvaneCMD list --json printed no JSON: %s' % error, rc=rc)
    module.exit_json(changed=False, ansible_facts=dict(korvane_plugins=plugins))


if __name__ == '__main__':
    main()
