<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AccountSheets</name>
    <message>
        <source>New Property</source>
        <translation>Neues Objekt</translation>
    </message>
    <message>
        <source>Property</source>
        <translation>Objekt</translation>
    </message>
    <message>
        <source>The property needs a name.</source>
        <translation>Das Objekt braucht einen Namen.</translation>
    </message>
    <message>
        <source>The usual rent is no amount; write it like 1050.00.</source>
        <translation>Die übliche Miete ist kein Betrag; schreiben Sie sie wie 1050,00.</translation>
    </message>
    <message>
        <source>The usual bond is no amount; write it like 1050.00.</source>
        <translation>Die übliche Kaution ist kein Betrag; schreiben Sie sie wie 1050,00.</translation>
    </message>
    <message>
        <source>Change of Property</source>
        <translation>Änderung des Objekts</translation>
    </message>
    <message>
        <source>New Tenant</source>
        <translation>Neue Mietpartei</translation>
    </message>
    <message>
        <source>Tenant</source>
        <translation>Mietpartei</translation>
    </message>
    <message>
        <source>The tenant needs a name.</source>
        <translation>Die Mietpartei braucht einen Namen.</translation>
    </message>
    <message>
        <source>Change of Tenant</source>
        <translation>Änderung der Mietpartei</translation>
    </message>
</context>
<context>
    <name>BookLists</name>
    <message>
        <source>Tenant now</source>
        <translation>Mietet derzeit</translation>
    </message>
    <message>
        <source>Not a tenant now</source>
        <translation>Mietet derzeit nicht</translation>
    </message>
    <message>
        <source>Let</source>
        <translation>Vermietet</translation>
    </message>
    <message>
        <source>To come</source>
        <translation>Bevorstehend</translation>
    </message>
    <message>
        <source>Ended</source>
        <translation>Beendet</translation>
    </message>
    <message>
        <source>no property</source>
        <translation>kein Objekt</translation>
    </message>
    <message>
        <source>no tenant</source>
        <translation>keine Mietpartei</translation>
    </message>
    <message>
        <source>Letting</source>
        <translation>Mietverhältnis</translation>
    </message>
    <message>
        <source>Standing</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Balance</source>
        <translation>Saldo</translation>
    </message>
    <message>
        <source>Paid to</source>
        <translation>Bezahlt bis</translation>
    </message>
    <message>
        <source>Next due</source>
        <translation>Nächste Fälligkeit</translation>
    </message>
    <message>
        <source>Property</source>
        <translation>Objekt</translation>
    </message>
    <message>
        <source>Tenants now</source>
        <translation>Derzeitige Mietparteien</translation>
    </message>
    <message>
        <source>Rent received</source>
        <translation>Mieteinnahmen</translation>
    </message>
    <message>
        <source>Own income and costs</source>
        <translation>Eigene Einnahmen und Kosten</translation>
    </message>
    <message>
        <source>Net</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Tenants&apos; balance</source>
        <translation>Saldo der Mietparteien</translation>
    </message>
    <message>
        <source>Tenant</source>
        <translation>Mietpartei</translation>
    </message>
    <message>
        <source>Paid</source>
        <translation>Bezahlt</translation>
    </message>
    <message>
        <source>Charged</source>
        <translation>Berechnet</translation>
    </message>
    <message>
        <source>Since</source>
        <translation>Seit</translation>
    </message>
    <message>
        <source>Owed</source>
        <translation>Geschuldet</translation>
    </message>
    <message>
        <source>Due today</source>
        <translation>Heute fällig</translation>
    </message>
    <message>
        <source>1–30 days</source>
        <translation>1–30 Tage</translation>
    </message>
    <message>
        <source>31–60 days</source>
        <translation>31–60 Tage</translation>
    </message>
    <message>
        <source>61–90 days</source>
        <translation>61–90 Tage</translation>
    </message>
    <message>
        <source>Over 90 days</source>
        <translation>Über 90 Tage</translation>
    </message>
    <message>
        <source>Not yet due</source>
        <translation>Noch nicht fällig</translation>
    </message>
</context>
<context>
    <name>BookSession</name>
    <message>
        <source>%1: there is no such book; choose another one</source>
        <translation>%1: Dieses Buch gibt es nicht; wählen Sie ein anderes</translation>
    </message>
    <message>
        <source>%1: this is no book file; take a document in with Book &gt; Import</source>
        <translation>%1: Das ist keine Buchdatei; ein Dokument übernehmen Sie mit Buch &gt; Dokument importieren</translation>
    </message>
    <message>
        <source>An earlier version wrote this book; it is up to date now, and is kept as it was in %1</source>
        <translation>Eine frühere Version hat dieses Buch geschrieben; es ist jetzt auf dem neuen Stand, und wie es war, steht es in %1</translation>
    </message>
    <message>
        <source>&quot;%1&quot; ends before it starts, so that the book cannot be saved; correct its dates</source>
        <translation>„%1“ endet vor seinem Beginn, sodass das Buch nicht gesichert werden kann; berichtigen Sie die Daten</translation>
    </message>
    <message>
        <source>. Until then the edits are kept in %1</source>
        <translation>. Bis dahin stehen die Änderungen in %1</translation>
    </message>
    <message>
        <source>. The edits are only in memory: %1</source>
        <translation>. Die Änderungen stehen nur im Arbeitsspeicher: %1</translation>
    </message>
    <message>
        <source>No copy can be kept, so that nothing was done. %1</source>
        <translation>Es lässt sich keine Kopie aufbewahren, sodass nichts geschehen ist. %1</translation>
    </message>
</context>
<context>
    <name>Dialogs</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>There is “%1” in this folder already. Choose another name.</source>
        <translation>In diesem Ordner gibt es „%1“ schon. Wählen Sie einen anderen Namen.</translation>
    </message>
    <message>
        <source>There is “%1” in this folder already. Put the new file in its place?</source>
        <translation>In diesem Ordner gibt es „%1“ schon. Soll die neue Datei an ihre Stelle treten?</translation>
    </message>
    <message>
        <source>Replace</source>
        <translation>Ersetzen</translation>
    </message>
</context>
<context>
    <name>Figures</name>
    <message>
        <source>division by zero</source>
        <translation>Division durch null</translation>
    </message>
    <message>
        <source>overflow</source>
        <translation>zu große Zahl</translation>
    </message>
    <message>
        <source>underflow</source>
        <translation>zu kleine Zahl</translation>
    </message>
    <message>
        <source>invalid argument</source>
        <translation>ungültige Angabe</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
</context>
<context>
    <name>NotesSheet</name>
    <message>
        <source>Notes</source>
        <translation>Notizen</translation>
    </message>
    <message>
        <source>&amp;Add</source>
        <translation>&amp;Hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Delete</source>
        <translation>&amp;Löschen</translation>
    </message>
    <message>
        <source>&amp;Subject</source>
        <translation>&amp;Betreff</translation>
    </message>
    <message>
        <source>Subject</source>
        <translation>Betreff</translation>
    </message>
    <message>
        <source>Text of the note</source>
        <translation>Text der Notiz</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>%1, without a subject</source>
        <translation>%1, ohne Betreff</translation>
    </message>
    <message>
        <source>There are no notes yet. Add one on the left.</source>
        <translation>Es gibt noch keine Notizen. Fügen Sie links eine hinzu.</translation>
    </message>
    <message>
        <source>Written by %1</source>
        <translation>Geschrieben von %1</translation>
    </message>
    <message>
        <source>Change of Notes</source>
        <translation>Änderung der Notizen</translation>
    </message>
</context>
<context>
    <name>PaymentSheet</name>
    <message>
        <source>Payment</source>
        <translation>Zahlung</translation>
    </message>
    <message>
        <source>&amp;Amount</source>
        <translation>&amp;Betrag</translation>
    </message>
    <message>
        <source>Amount</source>
        <translation>Betrag</translation>
    </message>
    <message>
        <source>For &amp;what</source>
        <translation>&amp;Zweck</translation>
    </message>
    <message>
        <source>For what</source>
        <translation>Zweck</translation>
    </message>
    <message>
        <source>Rent of June</source>
        <translation>Miete für Juni</translation>
    </message>
    <message>
        <source>&amp;Date</source>
        <translation>&amp;Datum</translation>
    </message>
    <message>
        <source>Date of the payment</source>
        <translation>Datum der Zahlung</translation>
    </message>
    <message>
        <source>d MMM yyyy</source>
        <translation>dd.MM.yyyy</translation>
    </message>
    <message>
        <source>&amp;Tags</source>
        <translation>&amp;Schlagwörter</translation>
    </message>
    <message>
        <source>Tags, with commas between them</source>
        <translation>Schlagwörter, durch Kommas getrennt</translation>
    </message>
    <message>
        <source>Rent, Bank</source>
        <translation>Miete, Bank</translation>
    </message>
    <message>
        <source>&amp;Receipt</source>
        <translation>Bele&amp;g</translation>
    </message>
    <message>
        <source>Receipt</source>
        <translation>Beleg</translation>
    </message>
    <message>
        <source>An ad&amp;justment: an allowance, a bond, a correction; not income</source>
        <translation>Eine &amp;Verrechnung: ein Nachlass, eine Kaution, eine Berichtigung; keine Einnahme</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>New Payment</source>
        <translation>Neue Zahlung</translation>
    </message>
    <message>
        <source>Received. Write a minus sign before what is charged or given back.</source>
        <translation>Erhalten. Schreiben Sie ein Minuszeichen vor das, was berechnet oder zurückgegeben wird.</translation>
    </message>
    <message>
        <source>Charged to the tenant, or given back.</source>
        <translation>Der Mietpartei berechnet oder zurückgegeben.</translation>
    </message>
    <message>
        <source>Spent on the property.</source>
        <translation>Für das Objekt ausgegeben.</translation>
    </message>
    <message>
        <source>The amount cannot be read; write it like 1050.00.</source>
        <translation>Der Betrag ist nicht lesbar; schreiben Sie ihn wie 1050,00.</translation>
    </message>
    <message>
        <source>The payment needs an amount.</source>
        <translation>Die Zahlung braucht einen Betrag.</translation>
    </message>
    <message>
        <source>Change of Payment</source>
        <translation>Änderung der Zahlung</translation>
    </message>
</context>
<context>
    <name>Program</name>
    <message>
        <source>Keeps the books of rental properties.</source>
        <translation>Führt die Bücher vermieteter Objekte.</translation>
    </message>
    <message>
        <source>The book to open.</source>
        <translation>Das Buch, das geöffnet wird.</translation>
    </message>
    <message>
        <source>Open the example book; make it there when it is not.</source>
        <translation>Das Beispielbuch öffnen; es wird dort angelegt, wenn es fehlt.</translation>
    </message>
    <message>
        <source>Make a picture of each window in the folder, and end.</source>
        <translation>Ein Bild jedes Fensters in den Ordner legen und enden.</translation>
    </message>
    <message>
        <source>%1: it cannot be written; check the folder and the room on the disk</source>
        <translation>%1: lässt sich nicht schreiben; prüfen Sie den Ordner und den freien Platz</translation>
    </message>
    <message>
        <source>%1: it cannot be made; choose another folder</source>
        <translation>%1: lässt sich nicht anlegen; wählen Sie einen anderen Ordner</translation>
    </message>
    <message>
        <source>system, light, dark or contrast; else what the desktop says.</source>
        <translation>system, light (hell), dark (dunkel) oder contrast (starker Kontrast); sonst wie der Schreibtisch.</translation>
    </message>
    <message>
        <source>--appearance: give system, light, dark or contrast</source>
        <translation>--appearance: geben Sie system, light, dark oder contrast an</translation>
    </message>
</context>
<context>
    <name>PropertySheet</name>
    <message>
        <source>Property</source>
        <translation>Objekt</translation>
    </message>
    <message>
        <source>&amp;Name</source>
        <translation>&amp;Name</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>12 Harbour Street</source>
        <translation>Hafenstraße 12</translation>
    </message>
    <message>
        <source>&amp;Part</source>
        <translation>&amp;Teil</translation>
    </message>
    <message>
        <source>Part of the property</source>
        <translation>Teil des Objekts</translation>
    </message>
    <message>
        <source>Ground floor shop; leave it out for the whole</source>
        <translation>Laden im Erdgeschoss; leer für das Ganze</translation>
    </message>
    <message>
        <source>&amp;Usual rent</source>
        <translation>Übliche &amp;Miete</translation>
    </message>
    <message>
        <source>Usual rent</source>
        <translation>Übliche Miete</translation>
    </message>
    <message>
        <source>every</source>
        <translation>je</translation>
    </message>
    <message>
        <source>Cycles of a rent period</source>
        <translation>Länge eines Mietzeitraums</translation>
    </message>
    <message>
        <source>Billing cycle</source>
        <translation>Abrechnungstakt</translation>
    </message>
    <message>
        <source>day</source>
        <translation>Tag(e)</translation>
    </message>
    <message>
        <source>week</source>
        <translation>Woche(n)</translation>
    </message>
    <message>
        <source>month</source>
        <translation>Monat(e)</translation>
    </message>
    <message>
        <source>year</source>
        <translation>Jahr(e)</translation>
    </message>
    <message>
        <source>Usual &amp;bond</source>
        <translation>Übliche &amp;Kaution</translation>
    </message>
    <message>
        <source>Usual bond</source>
        <translation>Übliche Kaution</translation>
    </message>
    <message>
        <source>&amp;Tags</source>
        <translation>&amp;Schlagwörter</translation>
    </message>
    <message>
        <source>Tags, with commas between them</source>
        <translation>Schlagwörter, durch Kommas getrennt</translation>
    </message>
    <message>
        <source>House, Harbour</source>
        <translation>Haus, Hafen</translation>
    </message>
    <message>
        <source>To be &amp;let</source>
        <translation>&amp;Zu vermieten</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
</context>
<context>
    <name>Sentences</name>
    <message>
        <source>it is open in another program; close it there first</source>
        <translation>Das Buch ist in einem anderen Programm geöffnet; schließen Sie es dort zuerst</translation>
    </message>
    <message>
        <source>%1 has it open in %2 since %3; close it there first</source>
        <translation>%1 hat das Buch seit %3 in %2 geöffnet; schließen Sie es dort zuerst</translation>
    </message>
    <message>
        <source>somebody</source>
        <translation>Jemand</translation>
    </message>
    <message>
        <source>another program</source>
        <translation>einem anderen Programm</translation>
    </message>
    <message>
        <source>there is no such book; choose another one</source>
        <translation>Dieses Buch gibt es nicht; wählen Sie ein anderes</translation>
    </message>
    <message>
        <source>there is something of this name already; choose another name</source>
        <translation>Unter diesem Namen gibt es schon etwas; wählen Sie einen anderen</translation>
    </message>
    <message>
        <source>this is no book, and was left as it is; choose a book&apos;s file</source>
        <translation>Das ist kein Buch und blieb, wie es ist; wählen Sie die Datei eines Buchs</translation>
    </message>
    <message>
        <source>a newer version of EstateBook wrote this book, and it was left as it is; open it with that one</source>
        <translation>Eine neuere Version von EstateBook hat dieses Buch geschrieben, und es blieb, wie es ist; öffnen Sie es mit dieser</translation>
    </message>
    <message>
        <source>the book is damaged, and was left as it is; go on with an earlier copy</source>
        <translation>Das Buch ist beschädigt und blieb, wie es ist; arbeiten Sie mit einer früheren Kopie weiter</translation>
    </message>
    <message>
        <source>the book is damaged, and was left as it is (%1); go on with an earlier copy</source>
        <translation>Das Buch ist beschädigt und blieb, wie es ist (%1); arbeiten Sie mit einer früheren Kopie weiter</translation>
    </message>
    <message>
        <source>another program is reading the book, so that nothing was changed; try again</source>
        <translation>Ein anderes Programm liest gerade das Buch, sodass nichts geändert wurde; versuchen Sie es noch einmal</translation>
    </message>
    <message>
        <source>the book or its folder may not be written, so that nothing was changed; ask for the right to write them</source>
        <translation>Das Buch oder sein Ordner darf nicht geschrieben werden, sodass nichts geändert wurde; lassen Sie sich das Recht dazu geben</translation>
    </message>
    <message>
        <source>there is no room left on the disk, so that nothing was changed; make room</source>
        <translation>Auf dem Datenträger ist kein Platz mehr, sodass nichts geändert wurde; schaffen Sie Platz</translation>
    </message>
    <message>
        <source>the book cannot be read or written; check the disk, and try again</source>
        <translation>Das Buch lässt sich nicht lesen oder schreiben; prüfen Sie den Datenträger, und versuchen Sie es noch einmal</translation>
    </message>
    <message>
        <source>the book cannot be read or written (%1); check the disk, and try again</source>
        <translation>Das Buch lässt sich nicht lesen oder schreiben (%1); prüfen Sie den Datenträger, und versuchen Sie es noch einmal</translation>
    </message>
    <message>
        <source>the book was moved or replaced while it was open, so that nothing was changed; put it back, or open it where it is now</source>
        <translation>Das Buch wurde verschoben oder ersetzt, während es geöffnet war, sodass nichts geändert wurde; legen Sie es zurück, oder öffnen Sie es dort, wo es jetzt ist</translation>
    </message>
    <message>
        <source>nobody can tell whether the last save is in the book; check the disk, and save once more</source>
        <translation>Ob das letzte Sichern im Buch angekommen ist, lässt sich nicht sagen; prüfen Sie den Datenträger, und sichern Sie noch einmal</translation>
    </message>
    <message>
        <source>there is no memory left, so that nothing was changed; close other programs, and try again</source>
        <translation>Der Arbeitsspeicher ist voll, sodass nichts geändert wurde; schließen Sie andere Programme, und versuchen Sie es noch einmal</translation>
    </message>
    <message>
        <source>there is no such folder; make it first</source>
        <translation>Diesen Ordner gibt es nicht; legen Sie ihn zuerst an</translation>
    </message>
    <message>
        <source>beside it lies the unfinished save of a book that is gone; choose another name</source>
        <translation>Daneben liegt, was von einem verschwundenen Buch noch nicht gesichert war; wählen Sie einen anderen Namen</translation>
    </message>
    <message>
        <source>this is no plain file; choose another name</source>
        <translation>Das ist keine gewöhnliche Datei; wählen Sie einen anderen Namen</translation>
    </message>
    <message>
        <source>this is a book, which is not replaced; choose another name</source>
        <translation>Das ist ein Buch und wird nicht ersetzt; wählen Sie einen anderen Namen</translation>
    </message>
    <message>
        <source>it cannot be written (%1); check its name, the permissions and the room on the disk</source>
        <translation>Die Datei lässt sich nicht schreiben (%1); prüfen Sie ihren Namen, die Rechte und den Platz auf dem Datenträger</translation>
    </message>
    <message>
        <source>the book cannot be read any further (%1); open it again, or go on with an earlier copy</source>
        <translation>Das Buch lässt sich nicht weiter lesen (%1); öffnen Sie es noch einmal, oder arbeiten Sie mit einer früheren Kopie weiter</translation>
    </message>
</context>
<context>
    <name>TenantSheet</name>
    <message>
        <source>Tenant</source>
        <translation>Mietpartei</translation>
    </message>
    <message>
        <source>&amp;Name</source>
        <translation>&amp;Name</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>A. Smith</source>
        <translation>A. Schmidt</translation>
    </message>
    <message>
        <source>&amp;Tags</source>
        <translation>&amp;Schlagwörter</translation>
    </message>
    <message>
        <source>Tags, with commas between them</source>
        <translation>Schlagwörter, durch Kommas getrennt</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
</context>
<context>
    <name>TenureSheet</name>
    <message>
        <source>Letting</source>
        <translation>Mietverhältnis</translation>
    </message>
    <message>
        <source>&amp;Property</source>
        <translation>&amp;Objekt</translation>
    </message>
    <message>
        <source>Property</source>
        <translation>Objekt</translation>
    </message>
    <message>
        <source>&amp;Tenant</source>
        <translation>Miet&amp;partei</translation>
    </message>
    <message>
        <source>Tenant</source>
        <translation>Mietpartei</translation>
    </message>
    <message>
        <source>Term</source>
        <translation>Laufzeit</translation>
    </message>
    <message>
        <source>&amp;Starts on</source>
        <translation>&amp;Beginnt am</translation>
    </message>
    <message>
        <source>First day</source>
        <translation>Erster Tag</translation>
    </message>
    <message>
        <source>d MMM yyyy</source>
        <translation>dd.MM.yyyy</translation>
    </message>
    <message>
        <source>&amp;Ends on</source>
        <translation>&amp;Endet am</translation>
    </message>
    <message>
        <source>Last day</source>
        <translation>Letzter Tag</translation>
    </message>
    <message>
        <source>that is</source>
        <translation>das sind</translation>
    </message>
    <message>
        <source>Length in rent periods</source>
        <translation>Länge in Mietzeiträumen</translation>
    </message>
    <message>
        <source>periods or</source>
        <translation>Zeiträume oder</translation>
    </message>
    <message>
        <source>Length in days</source>
        <translation>Länge in Tagen</translation>
    </message>
    <message>
        <source>days</source>
        <translation>Tage</translation>
    </message>
    <message>
        <source>&amp;Rent</source>
        <translation>&amp;Miete</translation>
    </message>
    <message>
        <source>Rent of a period</source>
        <translation>Miete eines Zeitraums</translation>
    </message>
    <message>
        <source>every</source>
        <translation>je</translation>
    </message>
    <message>
        <source>Cycles of a rent period</source>
        <translation>Länge eines Mietzeitraums</translation>
    </message>
    <message>
        <source>Billing cycle</source>
        <translation>Abrechnungstakt</translation>
    </message>
    <message>
        <source>day</source>
        <translation>Tag(e)</translation>
    </message>
    <message>
        <source>week</source>
        <translation>Woche(n)</translation>
    </message>
    <message>
        <source>month</source>
        <translation>Monat(e)</translation>
    </message>
    <message>
        <source>year</source>
        <translation>Jahr(e)</translation>
    </message>
    <message>
        <source>Paid</source>
        <translation>Zahlbar</translation>
    </message>
    <message>
        <source>in a&amp;rrears, when a period ends</source>
        <translation>&amp;nachträglich, wenn ein Zeitraum endet</translation>
    </message>
    <message>
        <source>in ad&amp;vance,</source>
        <translation>im &amp;Voraus,</translation>
    </message>
    <message>
        <source>Cycles ahead</source>
        <translation>Um wie viel im Voraus</translation>
    </message>
    <message>
        <source>Cycle of the advance</source>
        <translation>Takt des Voraus</translation>
    </message>
    <message>
        <source>ahead</source>
        <translation>vorher</translation>
    </message>
    <message>
        <source>&amp;Bond</source>
        <translation>&amp;Kaution</translation>
    </message>
    <message>
        <source>Bond</source>
        <translation>Kaution</translation>
    </message>
    <message>
        <source>Charge the &amp;whole letting at once, up to its last day</source>
        <translation>Das &amp;ganze Mietverhältnis auf einmal berechnen, bis zu seinem letzten Tag</translation>
    </message>
    <message>
        <source>Falls due next</source>
        <translation>Nächste Fälligkeiten</translation>
    </message>
    <message>
        <source>What falls due next</source>
        <translation>Was als Nächstes fällig wird</translation>
    </message>
    <message>
        <source>Charged so far</source>
        <translation>Bisher berechnet</translation>
    </message>
    <message>
        <source>Balance today</source>
        <translation>Saldo heute</translation>
    </message>
    <message>
        <source>A part of a period is charged</source>
        <translation>Ein Teil eines Zeitraums wird berechnet</translation>
    </message>
    <message>
        <source>only when it is whole</source>
        <translation>erst wenn er ganz ist</translation>
    </message>
    <message>
        <source>Nothing for a part: five and a half months are five rents.</source>
        <translation>Nichts für einen Teil: Fünfeinhalb Monate sind fünf Mieten.</translation>
    </message>
    <message>
        <source>by its days</source>
        <translation>nach seinen Tagen</translation>
    </message>
    <message>
        <source>Pro rata: fifteen of thirty days are half a rent.</source>
        <translation>Anteilig: Fünfzehn von dreißig Tagen sind eine halbe Miete.</translation>
    </message>
    <message>
        <source>in full once begun</source>
        <translation>voll, sobald er beginnt</translation>
    </message>
    <message>
        <source>A period that has begun is a whole rent: five and a half months are six.</source>
        <translation>Ein begonnener Zeitraum ist eine ganze Miete: Fünfeinhalb Monate sind sechs.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>New Letting</source>
        <translation>Neues Mietverhältnis</translation>
    </message>
    <message>
        <source>choose one, or write the name of a new one</source>
        <translation>wählen oder einen neuen Namen schreiben</translation>
    </message>
    <message>
        <source>Due</source>
        <translation>Fällig</translation>
    </message>
    <message>
        <source>Rent</source>
        <translation>Miete</translation>
    </message>
    <message>
        <source>Amount</source>
        <translation>Betrag</translation>
    </message>
    <message>
        <source>one rent</source>
        <translation>eine Miete</translation>
    </message>
    <message>
        <source>%1 rents</source>
        <translation>%1 Mieten</translation>
    </message>
    <message>
        <source>%1 to %2 is %3 and %4 days; %5 is %6.</source>
        <translation>%1 bis %2 sind %3 und %4 Tage; bis %5 sind es %6.</translation>
    </message>
    <message>
        <source>What falls due shows once there is a rent</source>
        <translation>Erscheint, sobald es eine Miete gibt</translation>
    </message>
    <message>
        <source>Nothing falls due any more</source>
        <translation>Es wird nichts mehr fällig</translation>
    </message>
    <message>
        <source>The property “%1” is added to the book.</source>
        <translation>Das Objekt „%1“ wird in das Buch aufgenommen.</translation>
    </message>
    <message>
        <source>The tenant “%1” is added to the book.</source>
        <translation>Die Mietpartei „%1“ wird in das Buch aufgenommen.</translation>
    </message>
    <message>
        <source>The letting needs a first day.</source>
        <translation>Das Mietverhältnis braucht einen ersten Tag.</translation>
    </message>
    <message>
        <source>The last day is before the first day.</source>
        <translation>Der letzte Tag liegt vor dem ersten.</translation>
    </message>
    <message>
        <source>The rent cannot be reckoned with these terms; check the amount, the dates and the advance.</source>
        <translation>Mit diesen Bedingungen lässt sich die Miete nicht errechnen; prüfen Sie den Betrag, die Daten und das Voraus.</translation>
    </message>
    <message>
        <source>The letting needs a property.</source>
        <translation>Das Mietverhältnis braucht ein Objekt.</translation>
    </message>
    <message>
        <source>The letting needs a tenant.</source>
        <translation>Das Mietverhältnis braucht eine Mietpartei.</translation>
    </message>
    <message>
        <source>The rent is no amount; write it like 1050.00.</source>
        <translation>Die Miete ist kein Betrag; schreiben Sie sie wie 1050,00.</translation>
    </message>
    <message>
        <source>The bond is no amount; write it like 1050.00.</source>
        <translation>Die Kaution ist kein Betrag; schreiben Sie sie wie 1050,00.</translation>
    </message>
    <message>
        <source>Change of Letting</source>
        <translation>Änderung des Mietverhältnisses</translation>
    </message>
</context>
<context>
    <name>estatebook::desktop::ListPage</name>
    <message>
        <source>Sums of %1</source>
        <translation>Summen: %1</translation>
    </message>
    <message>
        <source>Nothing found</source>
        <translation>Nichts gefunden</translation>
    </message>
    <message>
        <source>No line of this list has the text of the search in it.</source>
        <translation>In keiner Zeile dieser Liste steht der gesuchte Text.</translation>
    </message>
    <message>
        <source>1 line</source>
        <translation>1 Zeile</translation>
    </message>
    <message>
        <source>%1 lines</source>
        <translation>%1 Zeilen</translation>
    </message>
</context>
<context>
    <name>estatebook::desktop::MainWindow</name>
    <message>
        <source>Lettings</source>
        <translation>Mietverhältnisse</translation>
    </message>
    <message>
        <source>No lettings yet</source>
        <translation>Noch keine Mietverhältnisse</translation>
    </message>
    <message>
        <source>A letting says who rents what, from when, and for how much. The rent, what is owed and the statement follow from it.</source>
        <translation>Ein Mietverhältnis sagt, wer was ab wann und für wie viel mietet. Die Miete, die offenen Beträge und der Kontoauszug ergeben sich daraus.</translation>
    </message>
    <message>
        <source>New letting…</source>
        <translation>Neues Mietverhältnis…</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Objekte</translation>
    </message>
    <message>
        <source>No properties yet</source>
        <translation>Noch keine Objekte</translation>
    </message>
    <message>
        <source>A property is whatever is let: a house, a flat, a shop. Begin here.</source>
        <translation>Ein Objekt ist, was vermietet wird: ein Haus, eine Wohnung, ein Laden. Beginnen Sie hier.</translation>
    </message>
    <message>
        <source>New property…</source>
        <translation>Neues Objekt…</translation>
    </message>
    <message>
        <source>Tenants</source>
        <translation>Mietparteien</translation>
    </message>
    <message>
        <source>No tenants yet</source>
        <translation>Noch keine Mietparteien</translation>
    </message>
    <message>
        <source>A tenant is a person or a firm that rents.</source>
        <translation>Eine Mietpartei ist eine Person oder eine Firma, die mietet.</translation>
    </message>
    <message>
        <source>New tenant…</source>
        <translation>Neue Mietpartei…</translation>
    </message>
    <message>
        <source>Arrears</source>
        <translation>Rückstände</translation>
    </message>
    <message>
        <source>Nobody owes anything</source>
        <translation>Niemand schuldet etwas</translation>
    </message>
    <message>
        <source>What falls due and is not paid by the day is listed here, by its age.</source>
        <translation>Hier steht, was fällig und am Stichtag nicht bezahlt ist, nach seinem Alter.</translation>
    </message>
    <message>
        <source>Lists</source>
        <translation>Listen</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>%1[*] — EstateBook</source>
        <translation>%1[*] — EstateBook</translation>
    </message>
    <message>
        <source>EstateBook</source>
        <translation>EstateBook</translation>
    </message>
    <message>
        <source>Amounts in %1</source>
        <translation>Beträge in %1</translation>
    </message>
    <message>
        <source>Everything is saved</source>
        <translation>Alles ist gesichert</translation>
    </message>
    <message>
        <source>Edited; saved in a moment</source>
        <translation>Geändert; wird gleich gesichert</translation>
    </message>
    <message>
        <source>Edited, and not saved yet</source>
        <translation>Geändert und noch nicht gesichert</translation>
    </message>
    <message>
        <source>To be looked at only</source>
        <translation>Nur zum Ansehen</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>Erneut versuchen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Edits of %1 could not be saved then, and are kept beside the book.</source>
        <translation>Änderungen vom %1 konnten damals nicht gesichert werden und liegen neben dem Buch.</translation>
    </message>
    <message>
        <source>Edits</source>
        <translation>Änderungen</translation>
    </message>
    <message>
        <source>Go on with them</source>
        <translation>Damit weiterarbeiten</translation>
    </message>
    <message>
        <source>Discard them</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Not saved</source>
        <translation>Nicht gesichert</translation>
    </message>
    <message>
        <source>%1

The edits will be offered again when the book is opened.</source>
        <translation>%1

Die Änderungen werden beim nächsten Öffnen des Buchs wieder angeboten.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>&amp;New Book…</source>
        <translation>&amp;Neues Buch…</translation>
    </message>
    <message>
        <source>Ctrl+Shift+N</source>
        <translation>Ctrl+Shift+N</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>&amp;Öffnen…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>&amp;Save Now</source>
        <translation>Jetzt &amp;sichern</translation>
    </message>
    <message>
        <source>Ctrl+S</source>
        <translation>Ctrl+S</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>Ctrl+Z</source>
        <translation>Ctrl+Z</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>Ctrl+Shift+Z</source>
        <translation>Ctrl+Shift+Z</translation>
    </message>
    <message>
        <source>&amp;New…</source>
        <translation>&amp;Neu…</translation>
    </message>
    <message>
        <source>Ctrl+N</source>
        <translation>Ctrl+N</translation>
    </message>
    <message>
        <source>New &amp;Letting…</source>
        <translation>Neues &amp;Mietverhältnis…</translation>
    </message>
    <message>
        <source>Ctrl+T</source>
        <translation>Ctrl+T</translation>
    </message>
    <message>
        <source>New &amp;Property…</source>
        <translation>Neues &amp;Objekt…</translation>
    </message>
    <message>
        <source>New &amp;Tenant…</source>
        <translation>Neue Miet&amp;partei…</translation>
    </message>
    <message>
        <source>&amp;Edit…</source>
        <translation>&amp;Bearbeiten…</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>&amp;Delete…</source>
        <translation>&amp;Löschen…</translation>
    </message>
    <message>
        <source>Ctrl+Del</source>
        <translation>Ctrl+Del</translation>
    </message>
    <message>
        <source>Record &amp;Payment…</source>
        <translation>&amp;Zahlung erfassen…</translation>
    </message>
    <message>
        <source>Ctrl+P</source>
        <translation>Ctrl+P</translation>
    </message>
    <message>
        <source>N&amp;otes…</source>
        <translation>No&amp;tizen…</translation>
    </message>
    <message>
        <source>Ctrl+M</source>
        <translation>Ctrl+M</translation>
    </message>
    <message>
        <source>&amp;Statement</source>
        <translation>&amp;Kontoauszug</translation>
    </message>
    <message>
        <source>Ctrl+Return</source>
        <translation>Ctrl+Return</translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message>
        <source>Back to the figures of today</source>
        <translation>Zurück zu den Zahlen von heute</translation>
    </message>
    <message>
        <source>&amp;Book</source>
        <translation>&amp;Buch</translation>
    </message>
    <message>
        <source>&amp;Example Book</source>
        <translation>Beis&amp;pielbuch</translation>
    </message>
    <message>
        <source>&amp;Import a Document…</source>
        <translation>Dokument &amp;importieren…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>Been&amp;den</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>B&amp;earbeiten</translation>
    </message>
    <message>
        <source>&amp;Find</source>
        <translation>&amp;Suchen</translation>
    </message>
    <message>
        <source>Ctrl+F</source>
        <translation>Ctrl+F</translation>
    </message>
    <message>
        <source>&amp;Letting</source>
        <translation>&amp;Mietverhältnis</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>Ctrl+%1</source>
        <translation>Ctrl+%1</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About EstateBook</source>
        <translation>&amp;Über EstateBook</translation>
    </message>
    <message>
        <source>EstateBook %1

The books of rental properties: who rents what, what is owed, and what was paid.</source>
        <translation>EstateBook %1

Die Bücher vermieteter Objekte: wer was mietet, was geschuldet wird und was bezahlt wurde.</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>As of </source>
        <translation>Stand </translation>
    </message>
    <message>
        <source>The day of the figures</source>
        <translation>Der Stichtag der Zahlen</translation>
    </message>
    <message>
        <source>d MMM yyyy</source>
        <translation>dd.MM.yyyy</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>&amp;Undo %1</source>
        <translation>&amp;Rückgängig: %1</translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation>&amp;Wiederholen: %1</translation>
    </message>
    <message>
        <source>New Book</source>
        <translation>Neues Buch</translation>
    </message>
    <message>
        <source>My Properties</source>
        <translation>Meine Objekte</translation>
    </message>
    <message>
        <source>Books (*%1)</source>
        <translation>Bücher (*%1)</translation>
    </message>
    <message>
        <source>Open Book</source>
        <translation>Buch öffnen</translation>
    </message>
    <message>
        <source>Books (*%1);;All files (*)</source>
        <translation>Bücher (*%1);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Harbour Street</source>
        <translation>Harbour Street</translation>
    </message>
    <message>
        <source>Import a Document</source>
        <translation>Dokument importieren</translation>
    </message>
    <message>
        <source>Book documents (*.json);;All files (*)</source>
        <translation>Buchdokumente (*.json);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>New Book of the Document</source>
        <translation>Neues Buch aus dem Dokument</translation>
    </message>
    <message>
        <source>%1: %2; choose another one</source>
        <translation>%1: %2; wählen Sie ein anderes</translation>
    </message>
    <message>
        <source>Deletion of Letting</source>
        <translation>Löschen des Mietverhältnisses</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>“%1” has lettings, which are part of the books. End them, or delete them first.</source>
        <translation>„%1“ hat Mietverhältnisse, die zu den Büchern gehören. Beenden Sie diese, oder löschen Sie sie zuerst.</translation>
    </message>
    <message>
        <source>Deletion of Property</source>
        <translation>Löschen des Objekts</translation>
    </message>
    <message>
        <source>Deletion of Tenant</source>
        <translation>Löschen der Mietpartei</translation>
    </message>
    <message>
        <source>Delete “%1” with all its payments and notes? It can be undone.</source>
        <translation>„%1“ mit allen Zahlungen und Notizen löschen? Das lässt sich rückgängig machen.</translation>
    </message>
    <message>
        <source>Example Book</source>
        <translation>Beispielbuch</translation>
    </message>
</context>
<context>
    <name>estatebook::desktop::SettingsPage</name>
    <message>
        <source>Currency</source>
        <translation>Währung</translation>
    </message>
    <message>
        <source>at the start of each period</source>
        <translation>am Anfang jedes Zeitraums</translation>
    </message>
    <message>
        <source>at the end of each period</source>
        <translation>am Ende jedes Zeitraums</translation>
    </message>
    <message>
        <source>New lettings are billed</source>
        <translation>Neue Mietverhältnisse werden abgerechnet</translation>
    </message>
    <message>
        <source>Book</source>
        <translation>Buch</translation>
    </message>
    <message>
        <source>It holds</source>
        <translation>Es enthält</translation>
    </message>
    <message>
        <source>Time zone</source>
        <translation>Zeitzone</translation>
    </message>
    <message>
        <source>&amp;Currency</source>
        <translation>&amp;Währung</translation>
    </message>
    <message>
        <source>New lettings are &amp;billed</source>
        <translation>Neue Mietverhältnisse &amp;abrechnen</translation>
    </message>
    <message>
        <source>Amounts are rounded to the currency. A book keeps its time zone: all its days are those of that place.</source>
        <translation>Beträge werden auf die Währung gerundet. Ein Buch behält seine Zeitzone: Alle seine Tage sind die jenes Orts.</translation>
    </message>
    <message>
        <source>Lettings: %1, properties: %2, tenants: %3</source>
        <translation>Mietverhältnisse: %1, Objekte: %2, Mietparteien: %3</translation>
    </message>
    <message>
        <source>Change of Currency</source>
        <translation>Änderung der Währung</translation>
    </message>
    <message>
        <source>Change of Billing</source>
        <translation>Änderung der Abrechnung</translation>
    </message>
</context>
<context>
    <name>estatebook::desktop::StatementModel</name>
    <message>
        <source>1 line without a tag</source>
        <translation>1 Zeile ohne Schlagwort</translation>
    </message>
    <message>
        <source>%1 lines without a tag</source>
        <translation>%1 Zeilen ohne Schlagwort</translation>
    </message>
    <message>
        <source>Balance on %1</source>
        <translation>Saldo am %1</translation>
    </message>
    <message>
        <source>Outstanding</source>
        <translation>Offen</translation>
    </message>
    <message>
        <source>Not yet due</source>
        <translation>Noch nicht fällig</translation>
    </message>
    <message>
        <source>Balance with what is not yet due</source>
        <translation>Saldo mit dem noch nicht Fälligen</translation>
    </message>
    <message>
        <source>Not recorded, but reckoned from the terms of the letting</source>
        <translation>Nicht gebucht, sondern aus den Bedingungen des Mietverhältnisses errechnet</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
    <message>
        <source>Tags</source>
        <translation>Schlagwörter</translation>
    </message>
    <message>
        <source>Amount</source>
        <translation>Betrag</translation>
    </message>
    <message>
        <source>Balance</source>
        <translation>Saldo</translation>
    </message>
</context>
<context>
    <name>estatebook::desktop::StatementPage</name>
    <message>
        <source>&amp;Outstanding only</source>
        <translation>Nur &amp;Offenes</translation>
    </message>
    <message>
        <source>By &amp;tag</source>
        <translation>Nach Schlag&amp;wort</translation>
    </message>
    <message>
        <source>← &amp;Back</source>
        <translation>← &amp;Zurück</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>C&amp;SV…</source>
        <translation>C&amp;SV…</translation>
    </message>
    <message>
        <source>PD&amp;F…</source>
        <translation>PD&amp;F…</translation>
    </message>
    <message>
        <source>&amp;Print…</source>
        <translation>&amp;Drucken…</translation>
    </message>
    <message>
        <source>Comma-separated values (*.csv)</source>
        <translation>Durch Kommas getrennte Werte (*.csv)</translation>
    </message>
    <message>
        <source>PDF documents (*.pdf)</source>
        <translation>PDF-Dokumente (*.pdf)</translation>
    </message>
    <message>
        <source>Statement</source>
        <translation>Kontoauszug</translation>
    </message>
    <message>
        <source>The rent cannot be reckoned (%1); check the terms, the dates and the amounts.</source>
        <translation>Die Miete lässt sich nicht errechnen (%1); prüfen Sie die Bedingungen, die Daten und die Beträge.</translation>
    </message>
    <message>
        <source>Outstanding lines as of %1</source>
        <translation>Offene Zeilen, Stand %1</translation>
    </message>
    <message>
        <source>Statement as of %1</source>
        <translation>Kontoauszug, Stand %1</translation>
    </message>
    <message>
        <source>Save Statement</source>
        <translation>Kontoauszug sichern</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
    <message>
        <source>Amount</source>
        <translation>Betrag</translation>
    </message>
    <message>
        <source>Balance</source>
        <translation>Saldo</translation>
    </message>
    <message>
        <source>Page {page} of {pages}</source>
        <translation>Seite {page} von {pages}</translation>
    </message>
    <message>
        <source>{heading} (continued)</source>
        <translation>{heading} (Fortsetzung)</translation>
    </message>
    <message>
        <source>Balance on %1</source>
        <translation>Saldo am %1</translation>
    </message>
    <message>
        <source>Outstanding</source>
        <translation>Offen</translation>
    </message>
    <message>
        <source>Not yet due</source>
        <translation>Noch nicht fällig</translation>
    </message>
    <message>
        <source>Balance with what is not yet due</source>
        <translation>Saldo mit dem noch nicht Fälligen</translation>
    </message>
    <message>
        <source>Lines in italics are not recorded, but reckoned from the terms of the letting.</source>
        <translation>Kursive Zeilen sind nicht gebucht, sondern aus den Bedingungen des Mietverhältnisses errechnet.</translation>
    </message>
    <message>
        <source>Lines without a tag: %1, which come to %2</source>
        <translation>Zeilen ohne Schlagwort: %1, zusammen %2</translation>
    </message>
</context>
<context>
    <name>estatebook::desktop::WelcomePage</name>
    <message>
        <source>EstateBook</source>
        <translation>EstateBook</translation>
    </message>
    <message>
        <source>Who lives where, what they owe today, and what was paid.</source>
        <translation>Wer wo wohnt, was heute geschuldet wird und was bezahlt wurde.</translation>
    </message>
    <message>
        <source>&amp;Look at it without editing</source>
        <translation>&amp;Ansehen, ohne zu ändern</translation>
    </message>
    <message>
        <source>Try the &amp;example book</source>
        <translation>&amp;Beispielbuch ausprobieren</translation>
    </message>
    <message>
        <source>&amp;New book…</source>
        <translation>&amp;Neues Buch…</translation>
    </message>
    <message>
        <source>&amp;Open a book…</source>
        <translation>Buch &amp;öffnen…</translation>
    </message>
    <message>
        <source>The example is a copy of your own: change in it whatever you like.</source>
        <translation>Das Beispiel ist Ihre eigene Kopie: Ändern Sie darin, was Sie möchten.</translation>
    </message>
</context>
</TS>
