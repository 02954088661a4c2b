"""What a newcomer does with the contact book: import it, see who called, and call back from the log."""
import sound
from desk import ScreenTestCase
from program import eventually, read_ini
from sip_caller import leave_message

BOOK = """BEGIN:VCARD
VERSION:3.0
FN:Jane Sample
TEL;TYPE=HOME,VOICE:5551234
ORG:Sample Trading
END:VCARD
BEGIN:VCARD
VERSION:4.0
FN:Jürgen Beispiel
TEL;VALUE=uri;TYPE="voice,work":tel:+49-30-123456
END:VCARD
"""


class Newcomer(ScreenTestCase):
    def test_imports_a_book_sees_who_called_and_calls_back(self):
        self.start()
        screen, home = self.screen, self.home
        book = home.path / "book.vcf"
        book.write_text(BOOK, newline="\r\n")

        screen.window("Kelmio Standard")
        screen.key("alt+t", "Down", "Down", "Return")
        contacts = screen.window("Contacts")
        screen.click(contacts, 178, 45)  # Import
        screen.window("Import")
        screen.key("Return")
        screen.window("Open Address Book File")
        screen.type(str(book))
        screen.key("Return")
        eventually(lambda: len(read_ini(home.path / "Contacts.ini")) == 2, "two contacts")
        screen.no_window("Import")
        names = [contact["Name"] for contact in read_ini(home.path / "Contacts.ini").values()]
        self.assertEqual(names, ["Jane Sample", "Jürgen Beispiel"])
        screen.window("Contacts")
        screen.key("Escape")
        screen.no_window("Contacts")

        leave_message(self.program, sound.voice(2), "<sip:5551234@127.0.0.1>")
        [(_, record)] = home.complete_messages(1)
        self.assertEqual((record["Name"], record["Number"]), ("Jane Sample", "5551234"))

        screen.window("Kelmio Standard")
        screen.key("alt+t", "Down", "Down", "Down", "Return")
        screen.window("Call Log")
        screen.key("space", "Tab", "Tab", "space")  # the first entry, past "Add to Contact" to "Dial"
        screen.window("Dialer")
        screen.key("Escape")
        screen.no_window("Dialer")
        self.assertEqual(home.setting("DialerLastNumber"), "5551234")
