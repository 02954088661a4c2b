"""What a newcomer does with the contact book: import it, see who called, and call back from the log."""
import unittest

import sip_caller
import sound
from desk import Screen
from program import Home, Program, eventually, main, read_ini

BOOK = """BEGIN:VCARD\r
VERSION:3.0\r
FN:Jane Sample\r
TEL;TYPE=HOME,VOICE:5551234\r
ORG:Sample Trading\r
END:VCARD\r
BEGIN:VCARD\r
VERSION:4.0\r
FN:Jürgen Beispiel\r
TEL;VALUE=uri;TYPE="voice,work":tel:+49-30-123456\r
END:VCARD\r
"""


class Newcomer(unittest.TestCase):
    def test_imports_a_book_sees_who_called_and_calls_back(self):
        screen = Screen()
        self.addCleanup(screen.close)
        home = Home()
        self.addCleanup(home.remove)
        book = home.path / "book.vcf"
        book.write_text(BOOK, newline="")
        program = Program(home, surroundings=screen.environment())
        self.addCleanup(program.stop)

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

        with sip_caller.Call(program.port, "<sip:5551234@127.0.0.1>") as call:
            call.answered()
            call.voice.say(sound.voice(2))
            call.hang_up()
        (_, record), = home.complete_messages(1)
        self.assertEqual((record["Name"], record["Number"]), ("Jane Sample", "5551234"))

        screen.window("Kelmio Standard")
        screen.key("alt+t", "Down", "Down", "Down", "Return")
        screen.window("Call Log")
        screen.key("space", "Tab", "Tab", "space")  # the first entry, past "Add to Contact" to "Dial"
        screen.window("Dialer")
        screen.key("Escape")
        screen.no_window("Dialer")
        self.assertEqual(home.setting("DialerLastNumber"), "5551234")


if __name__ == "__main__":
    main()
