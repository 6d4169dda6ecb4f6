#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fixes in browsers and large editors on a private desktop, one scene per run.

usage: large_apps.py --list | large_apps.py SCENE AGENT QT6_EDITOR

The browsers show files of the test's own and are kept off the network.
"""
import os

from session import DesktopError, run_scene, until
from stage import ANSWER_SECONDS, SCENES, main, scene

PAGE = '<!DOCTYPE html><meta charset="utf-8"><title>letter</title>{field}'
TEXT_AREA = '<textarea autofocus rows="10" cols="40">{text}</textarea>'
PASSWORD = '<input type="password" autofocus value="{text}">'
# Pages that tell in the window's title what is in their field, and when all of it is selected.
TELLING = ' oninput="document.title = this.value" onselect="document.title = \'selected\'"'

CHROMIUM = ['chromium', '--no-sandbox', '--no-first-run', '--no-default-browser-check', '--disable-background-networking',
            '--disable-component-update', '--disable-sync', '--disable-default-apps', '--disable-extensions', '--disable-gpu',
            '--disable-features=Translate,MediaRouter,OptimizationHints', '--password-store=basic', '--disable-dev-shm-usage']
# So that the tests can read what a page holds.
READABLE = '--force-renderer-accessibility'

FIREFOX_PREFERENCES = '''
user_pref("app.update.enabled", false);
user_pref("app.normandy.enabled", false);
user_pref("browser.aboutwelcome.enabled", false);
user_pref("browser.safebrowsing.malware.enabled", false);
user_pref("browser.safebrowsing.phishing.enabled", false);
user_pref("browser.safebrowsing.update.enabled", false);
user_pref("browser.shell.checkDefaultBrowser", false);
user_pref("browser.startup.homepage_override.mstone", "ignore");
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("datareporting.policy.dataSubmissionPolicyBypassNotification", true);
user_pref("extensions.getAddons.cache.enabled", false);
user_pref("extensions.update.enabled", false);
user_pref("network.captive-portal-service.enabled", false);
user_pref("network.connectivity-service.enabled", false);
user_pref("network.dns.disablePrefetch", true);
user_pref("network.prefetch-next", false);
user_pref("services.settings.server", "data:,");
user_pref("signon.rememberSignons", false);
user_pref("toolkit.telemetry.enabled", false);
user_pref("trailhead.firstrun.didSeeAboutWelcome", true);
'''

OFFICE_SETTINGS = '''<?xml version="1.0" encoding="UTF-8"?>
<oor:items xmlns:oor="http://openoffice.org/2001/registry" xmlns:xs="http://www.w3.org/2001/XMLSchema"
  xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="FirstRun" oor:op="fuse"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="ShowTipOfTheDay" oor:op="fuse"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Setup/Product"><prop oor:name="ooSetupLastVersion" oor:op="fuse"><value>99.9</value></prop></item>
</oor:items>
'''


def page(session, field, text):
    path = session.folder / 'letter.html'
    path.write_text(PAGE.format(field=field.format(text=text)), encoding='utf-8')
    return path.as_uri()


def chromium(session, field, text):
    return CHROMIUM + [READABLE, f'--user-data-dir={session.folder / "chromium"}', page(session, field, text)]


def firefox(session, field, text):
    profile = session.folder / 'firefox'
    profile.mkdir()
    (profile / 'user.js').write_text(FIREFOX_PREFERENCES, encoding='utf-8')
    return ['firefox-esr', '--new-instance', '--profile', str(profile), page(session, field, text)]


def document(session, text):
    path = session.folder / 'letter.txt'
    path.write_text(text, encoding='utf-8')
    return path


def office(session, _field, text):
    settings = session.folder / 'office' / 'user'
    settings.mkdir(parents=True)
    (settings / 'registrymodifications.xcu').write_text(OFFICE_SETTINGS, encoding='utf-8')
    os.environ['SAL_USE_VCLPLUGIN'] = 'gtk3'
    return ['soffice', f'-env:UserInstallation={settings.parent.as_uri()}', '--writer', '--norestore', '--nologo',
            str(document(session, text))]


def kate(session, _field, text):
    return ['kate', '--startanon', '--new', '--block', str(document(session, text))]


def silent_chromium(session, field, text):
    """As users start it, where no accessibility interface tells anything."""
    return CHROMIUM + [f'--user-data-dir={session.folder / "chromium"}', page(session, field, text)]


# Per application: how it is started, what it calls itself.
APPLICATIONS = {'chromium': (chromium, 'chromium'), 'firefox': (firefox, 'firefox'), 'writer': (office, 'soffice'),
                'kate': (kate, 'kate')}


def open_application(stage, application, text, field=TEXT_AREA):
    start, name = APPLICATIONS[application]
    stage.show(start(stage.session, field, text), name)


def fixes_both_ways(stage, application):
    """Latin text becomes Hebrew, that becomes Latin again, and the layout follows."""
    stage.start_agent()
    stage.put_on_clipboard('kept')
    open_application(stage, application, 'akuo nv akunl')
    until(lambda: stage.field.text() == 'akuo nv akunl', f'{application} to show the text')
    for meant, group in (('שלום מה שלומך', 1), ('akuo nv akunl', 0)):
        stage.select_all_of_page()
        stage.fix(meant)
        stage.expect_group(group)
        until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')
    stage.expect_paths(['not applicable, falling back to clipboard'] * 2)


def keeps_the_clipboard(stage, application):
    """The same by copy and paste, with everything on the clipboard kept."""
    stage.start_agent(compatMode=True)
    open_application(stage, application, 'akuo nv akunl')
    until(lambda: stage.field.text() == 'akuo nv akunl', f'{application} to show the text')
    stage.put_on_clipboard('<b>kept</b>', 'text/html')
    targets = stage.clipboard_targets()
    stage.select_all_of_page()
    stage.fix('שלום מה שלומך')
    assert 'clipboard: pasted 13 chars' in stage.session.log(), stage.session.log()
    until(lambda: stage.clipboard('text/html') == '<b>kept</b>', 'the clipboard to come back')
    assert stage.clipboard_targets() == targets, f'targets were {targets}, are {stage.clipboard_targets()}'


def refuses_a_password(stage, application):
    stage.start_agent()
    stage.put_on_clipboard('kept')
    open_application(stage, application, 'akuo', PASSWORD)
    until(lambda: len(stage.field.text() or '') == len('akuo'), 'the field to have the focus')
    stage.select_until(lambda: stage.field.selection_length() == len('akuo'))
    stage.expect_secure_input()


def fixes_two_paragraphs(stage, application):
    """An application that gives out one paragraph of a selection must not lose the other."""
    stage.start_agent()
    open_application(stage, application, 'akuo nv\n\nakunl')
    until(lambda: (stage.field.text() or '').startswith('akuo nv'), f'{application} to show the text')
    select_everything(stage)
    stage.fix_ends()
    until(lambda: (stage.field.text() or '').endswith('שלומך'), 'the end of the text to be fixed')
    select_everything(stage)
    stage.keyboard.press('Control+Insert')
    until(lambda: stage.clipboard() == 'שלום מה\n\nשלומך', 'the whole text to be fixed')


def select_everything(stage):
    """Also where the focused field is only a part of the document."""
    stage.select_until(lambda: stage.field.selection_length() > 0)


for _application in APPLICATIONS:
    SCENES[f'fixes_two_paragraphs_in_{_application}'] = lambda stage, a=_application: fixes_two_paragraphs(stage, a)
    SCENES[f'fixes_both_ways_in_{_application}'] = lambda stage, a=_application: fixes_both_ways(stage, a)
    SCENES[f'keeps_the_clipboard_in_{_application}'] = lambda stage, a=_application: keeps_the_clipboard(stage, a)
for _application in ('chromium', 'firefox'):
    SCENES[f'refuses_a_password_field_of_{_application}'] = lambda stage, a=_application: refuses_a_password(stage, a)


@scene
def leaves_a_sheet_of_calc_alive(stage):
    """A sheet has a billion cells: whoever asks for them all makes LibreOffice hang for good."""
    stage.start_agent()
    calc = office(stage.session, None, '')[:-1]
    calc[calc.index('--writer')] = '--calc'
    stage.session.start_in_front(calc)
    until(lambda: fill_first_cell(stage), 'the sheet to take what is typed')
    stage.put_on_clipboard('kept')
    stage.fix_ends()
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')
    stage.keyboard.press('Control+n')
    until(lambda: 'Untitled 2' in stage.session.active_title(), 'LibreOffice to open another sheet')


def fill_first_cell(stage):
    """Types a word into it, and tells whether it can be copied from there: a sheet that is just opening takes no keys."""
    for key in ('Escape', 'Control+Home', *'akuo', 'Return', 'Control+Home', 'Control+Insert'):
        stage.keyboard.press(key)
    try:
        return until(lambda: (stage.clipboard() or '').startswith('akuo'), 'the copy', ANSWER_SECONDS)
    except DesktopError:
        return False


@scene
def leaves_kate_alone_without_a_selection(stage):
    """With nothing selected it copies the line of the caret, which nobody wants to be converted."""
    stage.start_agent()
    stage.put_on_clipboard('kept')
    open_application(stage, 'kate', 'akuo nv')
    until(lambda: stage.field.text() == 'akuo nv', 'kate to show the text')
    stage.fix_that_fails('noSelection')
    assert 'clipboard: copied' not in stage.session.log(), stage.session.log()
    stage.expect_text('akuo nv')
    assert stage.clipboard() == 'kept'


@scene
def fixes_both_ways_in_chromium_without_accessibility(stage):
    stage.start_agent()
    stage.put_on_clipboard('kept')
    stage.session.start(silent_chromium(stage.session, TEXT_AREA.replace('<textarea', '<textarea' + TELLING), 'akuo nv akunl'))
    until(lambda: 'letter' in stage.session.active_title(), 'the page')
    for meant, group in (('שלום מה שלומך', 1), ('akuo nv akunl', 0)):
        stage.select_until(lambda: 'selected' in stage.session.active_title())
        stage.keyboard.press('F2')
        until(lambda m=meant: m in stage.session.active_title(), f'the field to hold "{meant}"')
        stage.expect_group(group)
        until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')


@scene
def takes_nothing_from_a_password_field_of_chromium_without_accessibility(stage):
    """Nobody tells that it is one, but the field gives nothing out to be copied."""
    stage.start_agent()
    stage.put_on_clipboard('kept')
    stage.session.start(silent_chromium(stage.session, PASSWORD.replace('<input', '<input' + TELLING), 'akuo'))
    until(lambda: 'letter' in stage.session.active_title(), 'the page')
    stage.select_until(lambda: 'selected' in stage.session.active_title())
    stage.keyboard.press('F2')
    until(lambda: 'fix: failed' in stage.session.log(), 'the fix to fail')
    assert 'clipboard: copied' not in stage.session.log(), stage.session.log()
    assert 'selected' in stage.session.active_title(), stage.session.active_title()
    assert stage.clipboard() == 'kept'


if __name__ == '__main__':
    run_scene(lambda: main(__doc__))
