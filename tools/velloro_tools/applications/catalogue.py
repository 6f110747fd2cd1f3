"""The applications that are dictated into, beside the terminals."""

from .application import Application
from .fields import DraftField, FileField, PageField
from .terminals import TERMINALS

GECKO_SETTINGS = """
user_pref("app.normandy.enabled", false);
user_pref("app.update.auto", false);
user_pref("browser.aboutwelcome.enabled", false);
user_pref("browser.shell.checkDefaultBrowser", false);
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("datareporting.policy.dataSubmissionPolicyBypassNotification", true);
user_pref("termsofuse.acceptedVersion", 999);
user_pref("termsofuse.bypassNotification", true);
user_pref("browser.preonboarding.enabled", false);
user_pref("toolkit.telemetry.reportingpolicy.firstRun", false);
"""
NO_ACCESSIBILITY = 'user_pref("accessibility.force_disabled", 1);\n'

# An account whose letters never leave the machine, written as plain text in lines of any length.
MAIL_SETTINGS = GECKO_SETTINGS + """
user_pref("app.donation.eoy.version.viewed", 999);
user_pref("mail.account.account1.identities", "id1");
user_pref("mail.account.account1.server", "server1");
user_pref("mail.accountmanager.accounts", "account1");
user_pref("mail.accountmanager.defaultaccount", "account1");
user_pref("mail.accountmanager.localfoldersserver", "server1");
user_pref("mail.identity.id1.compose_html", false);
user_pref("mail.identity.id1.draft_folder", "mailbox://nobody@Local%20Folders/Drafts");
user_pref("mail.identity.id1.fullName", "A Writer");
user_pref("mail.identity.id1.useremail", "writer@example.org");
user_pref("mail.identity.id1.valid", true);
user_pref("mail.provider.suppress_dialog_on_startup", true);
user_pref("mail.rights.version", 1);
user_pref("mail.server.server1.directory-rel", "[ProfD]Mail/Local Folders");
user_pref("mail.server.server1.hostname", "Local Folders");
user_pref("mail.server.server1.name", "Local Folders");
user_pref("mail.server.server1.type", "none");
user_pref("mail.server.server1.userName", "nobody");
user_pref("mail.shell.checkDefaultClient", false);
user_pref("mailnews.send_plaintext_flowed", false);
user_pref("mailnews.start_page.enabled", false);
user_pref("mailnews.wraplength", 0);
"""

# No tip, no question about the file's format.
OFFICE_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<oor:items xmlns:oor="http://openoffice.org/2001/registry">
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="ShowTipOfTheDay" oor:op="fuse">
<value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="FirstRun" oor:op="fuse">
<value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Save/Document"><prop oor:name="WarnAlienFormat"
oor:op="fuse"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Setup/Product"><prop oor:name="ooSetupLastVersion" oor:op="fuse">
<value>99.9</value></prop></item>
<item oor:path="/org.openoffice.Setup/Product"><prop oor:name="WhatsNew" oor:op="fuse">
<value>false</value></prop></item>
</oor:items>
"""


def firefox(remark, page="textarea", settings=""):
    return Application(
        f"Firefox, {remark}", "Gecko", ["firefox-esr"],
        ["firefox-esr", "--new-instance", "--profile", "{home}/profile", "{page}"], PageField,
        page=page, title="letter", files={"profile/user.js": GECKO_SETTINGS + settings})


def chromium(remark, option, page="textarea"):
    return Application(
        f"Chromium, {remark}", "own", ["chromium"],
        ["chromium", "--no-sandbox", "--no-first-run", "--no-default-browser-check",
         "--password-store=basic", "--disable-gpu", option, "{page}"],
        PageField, page=page, title="letter")


def editor(name, toolkit, packages, *command, title="letter", **more):
    return Application(name, toolkit, packages, list(command), FileField, title=title, **more)


BROWSERS = [
    firefox("textarea"),
    firefox("input", "input"),
    firefox("contenteditable", "contenteditable"),
    firefox("no accessibility", settings=NO_ACCESSIBILITY),
    chromium("textarea", "--force-renderer-accessibility"),
    chromium("contenteditable", "--force-renderer-accessibility", "contenteditable"),
    chromium("no accessibility", "--disable-renderer-accessibility"),
    Application("Falkon", "Qt 5, Chromium", ["falkon"],
                ["falkon", "--private-browsing", "{page}"], PageField, title="letter",
                environment={"QTWEBENGINE_DISABLE_SANDBOX": "1"},
                remark="pastes twice for one stroke, the user's own, too, while an assistive "
                       "program listens"),
    Application("GNOME Web", "GTK 3, WebKit", ["epiphany-browser"],
                ["epiphany", "--private-instance", "{page}"], PageField, title="letter",
                environment={"WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS": "1",
                             "WEBKIT_DISABLE_COMPOSITING_MODE": "1"}),
]

EDITORS = [
    editor("LibreOffice Writer", "VCL, GTK 3", ["libreoffice-writer", "libreoffice-gtk3"],
           "soffice", "--writer", "--nologo", "--norestore", "{file}",
           environment={"SAL_USE_VCLPLUGIN": "gtk3"},
           files={".config/libreoffice/4/user/registrymodifications.xcu": OFFICE_SETTINGS}),
    Application("Thunderbird", "Gecko", ["thunderbird"],
                ["thunderbird", "--profile", "{home}/profile"],
                DraftField, files={"profile/user.js": MAIL_SETTINGS}),
    editor("Kate", "Qt 5, KDE", ["kate"], "kate", "{file}"),
    editor("gedit", "GTK 3", ["gedit"], "gedit", "--standalone", "{file}"),
    editor("GNOME Text Editor", "GTK 4", ["gnome-text-editor"],
           "gnome-text-editor", "--standalone", "{file}", environment={"GSK_RENDERER": "cairo"}),
    editor("Mousepad", "GTK 3", ["mousepad"], "mousepad", "--disable-server", "{file}"),
    editor("Pluma", "GTK 3", ["pluma"], "pluma", "{file}"),
    editor("L3afpad", "GTK 3", ["l3afpad"], "l3afpad", "{file}"),
    editor("Geany", "GTK 3, Scintilla", ["geany"], "geany", "--new-instance", "{file}"),
    editor("SciTE", "GTK 3, Scintilla", ["scite"], "SciTE", "{file}"),
    editor("FeatherPad", "Qt 5", ["featherpad"], "featherpad", "--standalone", "{file}"),
    editor("FocusWriter", "Qt 5", ["focuswriter"], "focuswriter", "{file}"),
    # Without LaTeX it asks at its start what to do about that.
    editor("TeXstudio", "Qt 5", ["texstudio"], "texstudio", "--no-session", "{file}",
           files={".config/texstudio/texstudio.ini":
                  "[texmaker]\nStartup\\CheckLatexConfiguration=false\n"}),
    editor("Emacs", "GTK 3", ["emacs-gtk"], "emacs", "-q", "--no-splash", "{file}", title="",
           save=(("Control_L", "x"), ("Control_L", "s"))),
    editor("gvim", "GTK 3", ["vim-gtk3"], "gvim", "-f", "-c", "imap <F2> <C-o>:w<CR>",
           "-c", "startinsert!", "{file}", before=(), save=(("F2",),)),
    editor("jEdit", "Java, Swing", ["jedit", "default-jre"], "jedit", "-nosettings", "-noserver",
           "{file}"),
    editor("Notepad of Wine", "Wine", ["wine", "wine64"], "wine", "notepad", "Z:{file}",
           environment={"WINEDLLOVERRIDES": "mscoree,mshtml=", "WINEDEBUG": "-all"},
           start_limit=150),
]

APPLICATIONS = BROWSERS + EDITORS + TERMINALS
