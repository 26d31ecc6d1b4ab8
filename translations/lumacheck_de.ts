<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_GB">
<context>
    <name>AboutDialog</name>
    <message>
        <source>Finds gamma and colour shifts between two movies.</source>
        <translation>Findet Gamma- und Farbabweichungen zwischen zwei Filmen.</translation>
    </message>
    <message>
        <source>Licence: GPL-3.0-or-later. It comes without any warranty.</source>
        <translation>Lizenz: GPL-3.0-or-later. Ohne jede Gewährleistung.</translation>
    </message>
    <message>
        <source>About Lumacheck</source>
        <translation>Über Lumacheck</translation>
    </message>
    <message>
        <source>It is built on:</source>
        <translation>Verwendete Bibliotheken:</translation>
    </message>
</context>
<context>
    <name>AlertPanel</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Einzelheiten</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Do not show this message again</source>
        <translation>Diese Meldung nicht mehr anzeigen</translation>
    </message>
</context>
<context>
    <name>BusySheet</name>
    <message>
        <source>Cancelling…</source>
        <translation>Wird abgebrochen&#xa0;…</translation>
    </message>
</context>
<context>
    <name>CheckMessages</name>
    <message>
        <source>No frames were compared. %1</source>
        <extracomment>%1: why, a sentence</extracomment>
        <translation>Es wurden keine Bilder verglichen. %1</translation>
    </message>
    <message>
        <source>No frames were compared. &quot;%1&quot; gives no picture at %2: %3.</source>
        <extracomment>%1: a file. %2: a timecode. %3: why, a clause</extracomment>
        <translation>Es wurden keine Bilder verglichen. „%1“ gibt bei %2 kein Bild her: %3.</translation>
    </message>
    <message>
        <source>No frames were compared. &quot;%1&quot; is too dark at %2: go to a brighter picture.</source>
        <translation>Es wurden keine Bilder verglichen. „%1“ ist bei %2 zu dunkel: bitte ein helleres Bild suchen.</translation>
    </message>
    <message>
        <source>Compared &quot;%1&quot; at %2 with &quot;%3&quot; at %4.</source>
        <extracomment>%1 and %3: files. %2 and %4: timecodes</extracomment>
        <translation>„%1“ bei %2 wurde mit „%3“ bei %4 verglichen.</translation>
    </message>
</context>
<context>
    <name>CurvePicture</name>
    <message>
        <source>Tone curve</source>
        <translation>Tonwertkurve</translation>
    </message>
    <message>
        <source>The destination&apos;s brightness (upwards) for each brightness of the source (to the right).
On the dotted line both are the same.</source>
        <translation>Die Helligkeit des Ziels (nach oben) zu jeder Helligkeit der Quelle (nach rechts).
Auf der gepunkteten Linie sind beide gleich.</translation>
    </message>
</context>
<context>
    <name>EditMenu</name>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederherstellen</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>&amp;Ausschneiden</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Einfügen</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>A&amp;lles auswählen</translation>
    </message>
</context>
<context>
    <name>FactTable</name>
    <message>
        <source>Source and destination compared</source>
        <translation>Quelle und Ziel im Vergleich</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <source>Destination</source>
        <translation>Ziel</translation>
    </message>
    <message>
        <source>%1, differs</source>
        <extracomment>For screen readers. %1: a value of one movie that the other has otherwise</extracomment>
        <translation>%1, weicht ab</translation>
    </message>
</context>
<context>
    <name>FindingText</name>
    <message>
        <source>Gamma shift: the destination is darker, by an exponent of %1 (%2 to %3).</source>
        <translation>Gammaverschiebung: Das Ziel ist dunkler, mit einem Exponenten von %1 (%2 bis %3).</translation>
    </message>
    <message>
        <source>Gamma shift: the destination is lighter, by an exponent of %1 (%2 to %3).</source>
        <translation>Gammaverschiebung: Das Ziel ist heller, mit einem Exponenten von %1 (%2 bis %3).</translation>
    </message>
    <message>
        <source>Range error: the destination is marked as full range, but holds the source&apos;s video range samples.</source>
        <translation>Falscher Bereich: Das Ziel ist als voller Bereich gekennzeichnet, enthält aber die Werte der Quelle im Videobereich.</translation>
    </message>
    <message>
        <source>Range error: the destination is marked as video range, but holds the source&apos;s full range samples.</source>
        <translation>Falscher Bereich: Das Ziel ist als Videobereich gekennzeichnet, enthält aber die Werte der Quelle im vollen Bereich.</translation>
    </message>
    <message>
        <source>Range error: the destination&apos;s levels were compressed; its blacks are grey and its whites dim.</source>
        <translation>Falscher Bereich: Die Pegel des Ziels wurden gestaucht; Schwarz ist grau, und Weiß ist matt.</translation>
    </message>
    <message>
        <source>Range error: the destination&apos;s levels were expanded; its shadows and highlights are cut off.</source>
        <translation>Falscher Bereich: Die Pegel des Ziels wurden gespreizt; Tiefen und Lichter sind abgeschnitten.</translation>
    </message>
    <message>
        <source>Matrix error: the destination names another Y&apos;CbCr matrix than the one that its samples are in.</source>
        <translation>Falsche Matrix: Das Ziel nennt eine andere Y&apos;CbCr-Matrix als die, in der seine Werte stehen.</translation>
    </message>
    <message>
        <source>Matrix error: the destination&apos;s colors were converted with the wrong Y&apos;CbCr matrix.</source>
        <translation>Falsche Matrix: Die Farben des Ziels wurden mit der falschen Y&apos;CbCr-Matrix umgerechnet.</translation>
    </message>
    <message>
        <source>Identical: the destination&apos;s samples are the source&apos;s.</source>
        <translation>Identisch: Die Werte des Ziels sind die der Quelle.</translation>
    </message>
    <message>
        <source>The same: the destination renders as the source does.</source>
        <translation>Gleich: Das Ziel sieht aus wie die Quelle.</translation>
    </message>
    <message>
        <source>The tone differs: the destination was graded, or went through another transfer function.</source>
        <translation>Andere Tonwerte: Das Ziel wurde farbkorrigiert oder durchlief eine andere Transferfunktion.</translation>
    </message>
    <message>
        <source>No verdict: the two frames do not show the same picture.</source>
        <translation>Kein Urteil: Die beiden Bilder zeigen nicht dasselbe.</translation>
    </message>
    <message>
        <source>No verdict: the source frame is too dark.</source>
        <translation>Kein Urteil: Das Bild der Quelle ist zu dunkel.</translation>
    </message>
    <message>
        <source>No verdict: there is too little in these frames to tell from.</source>
        <translation>Kein Urteil: In diesen Bildern ist zu wenig, um etwas zu sagen.</translation>
    </message>
    <message>
        <source>No verdict: a frame cannot be had.</source>
        <translation>Kein Urteil: Ein Bild ist nicht zu bekommen.</translation>
    </message>
    <message>
        <source>No verdict: it cannot be told surely what differs. The likeliest is: %1</source>
        <translation>Kein Urteil: Was abweicht, lässt sich nicht sicher sagen. Am ehesten: %1</translation>
    </message>
    <message>
        <source>The pictures differ by %1 codes of 8 bits, which is what an encoder leaves.</source>
        <translation>Die Bilder weichen um %1 Stufen bei 8 Bit voneinander ab, wie nach jeder Kodierung.</translation>
    </message>
    <message>
        <source>The pictures differ by %1 codes of 8 bits; with that undone, by %2.</source>
        <translation>Die Bilder weichen um %1 Stufen bei 8 Bit voneinander ab, ohne diese Änderung um %2.</translation>
    </message>
    <message>
        <source>%1 and %2</source>
        <translation>%1 und %2</translation>
    </message>
    <message>
        <source>turned</source>
        <translation>gedreht</translation>
    </message>
    <message>
        <source>mirrored</source>
        <translation>gespiegelt</translation>
    </message>
    <message>
        <source>set within bars</source>
        <translation>in Balken gesetzt</translation>
    </message>
    <message>
        <source>cropped</source>
        <translation>beschnitten</translation>
    </message>
    <message>
        <source>The destination&apos;s picture is %1; it was compared with the part of the source that it shows.</source>
        <translation>Das Bild des Ziels ist %1; verglichen wurde es mit dem Teil der Quelle, den es zeigt.</translation>
    </message>
    <message>
        <source>%1 frames were compared.</source>
        <translation>%1 Bilder wurden verglichen.</translation>
    </message>
    <message>
        <source>%1 of them do not show the same picture.</source>
        <translation>%1 davon zeigen nicht dasselbe.</translation>
    </message>
    <message>
        <source>The source is in full range, the destination in video range.</source>
        <translation>Die Quelle ist im vollen Bereich, das Ziel im Videobereich.</translation>
    </message>
    <message>
        <source>The source is in video range, the destination in full range.</source>
        <translation>Die Quelle ist im Videobereich, das Ziel im vollen Bereich.</translation>
    </message>
    <message>
        <source>%1 (not in the destination)</source>
        <translation>%1 (fehlt im Ziel)</translation>
    </message>
    <message>
        <source>%1 (only in the destination)</source>
        <translation>%1 (nur im Ziel)</translation>
    </message>
    <message>
        <source>gamma</source>
        <translation>Gamma</translation>
    </message>
    <message>
        <source>primaries</source>
        <translation>Primärfarben</translation>
    </message>
    <message>
        <source>transfer function</source>
        <translation>Transferfunktion</translation>
    </message>
    <message>
        <source>matrix</source>
        <translation>Matrix</translation>
    </message>
    <message>
        <source>profile</source>
        <translation>Profil</translation>
    </message>
    <message>
        <source>Tags that differ: %1.</source>
        <translation>Abweichende Angaben: %1.</translation>
    </message>
    <message>
        <source>Such a number is usual where gammas of %1 and %2 are mixed up: look for that setting.</source>
        <translation>Diese Zahl ist üblich, wo Gamma %1 und Gamma %2 verwechselt werden: Suchen Sie nach dieser Einstellung.</translation>
    </message>
    <message>
        <source>Such a number is usual where HLG&apos;s system gamma of 1.2 was applied or left out: look for that setting.</source>
        <translation>Diese Zahl ist üblich, wo HLGs Systemgamma von 1,2 angewandt oder ausgelassen wurde: Suchen Sie nach dieser Einstellung.</translation>
    </message>
    <message>
        <source>Such a number is usual where a picture is rendered for dim surroundings, by 1.25: look for that setting.</source>
        <translation>Diese Zahl ist üblich, wo ein Bild mit 1,25 für gedämpftes Umgebungslicht aufbereitet wird: Suchen Sie nach dieser Einstellung.</translation>
    </message>
    <message>
        <source>Such numbers are usual where NTSC&apos;s set-up of 7.5 % was added or taken away: look for that setting.</source>
        <translation>Diese Zahlen sind üblich, wo NTSCs Schwarzabhebung von 7,5 % hinzugefügt oder entfernt wurde: Suchen Sie nach dieser Einstellung.</translation>
    </message>
    <message>
        <source>Such a number is usual where black at 16 and black at 0 are mixed up: look for that setting.</source>
        <translation>Diese Zahl ist üblich, wo Schwarz bei 16 und Schwarz bei 0 verwechselt werden: Suchen Sie nach dieser Einstellung.</translation>
    </message>
    <message>
        <source>Such levels are usual where full range was written as video: look for a setting of data levels.</source>
        <translation>Solche Pegel sind üblich, wo voller Bereich als Videobereich geschrieben wurde: Suchen Sie nach einer Einstellung der Datenpegel.</translation>
    </message>
    <message>
        <source>Such levels are usual where video range was taken for full: look for a setting of data levels.</source>
        <translation>Solche Pegel sind üblich, wo Videobereich für vollen Bereich gehalten wurde: Suchen Sie nach einer Einstellung der Datenpegel.</translation>
    </message>
    <message>
        <source>Such a number is usual where gammas of %1 and %2, or of %3 and %4, are mixed up: look for these settings.</source>
        <translation>Diese Zahl ist üblich, wo Gamma %1 und Gamma %2 oder Gamma %3 und Gamma %4 verwechselt werden: Suchen Sie nach diesen Einstellungen.</translation>
    </message>
    <message>
        <source>Export again, without a gamma conversion.</source>
        <translation>Exportieren Sie noch einmal, ohne Gammaumrechnung.</translation>
    </message>
    <message>
        <source>Export again, and set the levels of input and output to the same: video (16 to 235), or full with its flag.</source>
        <translation>Exportieren Sie noch einmal, mit denselben Pegeln für Eingang und Ausgang: Video (16 bis 235), oder voll mit Kennzeichnung.</translation>
    </message>
    <message>
        <source>Export again, with the color space of the source (601 or 709) for input and output.</source>
        <translation>Exportieren Sie noch einmal, mit dem Farbraum der Quelle (601 oder 709) für Eingang und Ausgang.</translation>
    </message>
    <message>
        <source>Export again, without a change of brightness or contrast, and at a frame outside of fades.</source>
        <translation>Exportieren Sie noch einmal, ohne Helligkeit oder Kontrast zu ändern; prüfen Sie außerhalb von Blenden.</translation>
    </message>
    <message>
        <source>Export again, without grades, look-up tables or color management that the source did not have.</source>
        <translation>Exportieren Sie noch einmal, ohne Farbkorrektur, Look-up-Tabellen oder Farbmanagement, die die Quelle nicht hatte.</translation>
    </message>
    <message>
        <source>Choose another frame, or look into why this one cannot be had.</source>
        <translation>Wählen Sie ein anderes Bild, oder sehen Sie nach, warum dieses nicht zu bekommen ist.</translation>
    </message>
    <message>
        <source>Nothing is to be done.</source>
        <translation>Es ist nichts zu tun.</translation>
    </message>
    <message>
        <source>Sync the metadata: the samples are right, and the source has the tags that the destination lacks.</source>
        <translation>Gleichen Sie die Metadaten ab: Die Werte stimmen, und die Quelle hat die Angaben, die dem Ziel fehlen.</translation>
    </message>
    <message>
        <source>Set the destination&apos;s range flag right; its samples need no new encoding, and a sync does not reach it.</source>
        <translation>Berichtigen Sie die Kennzeichnung des Bereichs im Ziel; neu kodiert werden muss nichts, und ein Abgleich ändert sie nicht.</translation>
    </message>
    <message>
        <source>Tag the destination as it is: copying the source&apos;s tags would not make them right.</source>
        <translation>Kennzeichnen Sie das Ziel so, wie es ist: Die Angaben der Quelle würden es nicht berichtigen.</translation>
    </message>
    <message>
        <source>Place both playheads at the same picture, or choose another frame.</source>
        <translation>Stellen Sie beide Abspielköpfe auf dasselbe Bild, oder wählen Sie ein anderes.</translation>
    </message>
    <message>
        <source>Choose another frame, with more in it.</source>
        <translation>Wählen Sie ein anderes Bild, auf dem mehr zu sehen ist.</translation>
    </message>
    <message>
        <source>Choose another frame, or compare several.</source>
        <translation>Wählen Sie ein anderes Bild, oder vergleichen Sie mehrere.</translation>
    </message>
    <message>
        <source> minus 1 code</source>
        <translation> minus 1 Stufe</translation>
    </message>
    <message>
        <source> plus 1 code</source>
        <translation> plus 1 Stufe</translation>
    </message>
    <message>
        <source> minus %1 codes</source>
        <translation> minus %1 Stufen</translation>
    </message>
    <message>
        <source> plus %1 codes</source>
        <translation> plus %1 Stufen</translation>
    </message>
    <message>
        <source>Brightness or contrast: the destination is darker, %1 times the source%2.</source>
        <translation>Helligkeit oder Kontrast: Das Ziel ist dunkler, das %1-Fache der Quelle%2.</translation>
    </message>
    <message>
        <source>Brightness or contrast: the destination is lighter, %1 times the source%2.</source>
        <translation>Helligkeit oder Kontrast: Das Ziel ist heller, das %1-Fache der Quelle%2.</translation>
    </message>
    <message>
        <source>The tone differs in places: they were graded, or something lies over them.</source>
        <translation>Andere Tonwerte an einigen Stellen: Sie wurden farbkorrigiert, oder etwas liegt darüber.</translation>
    </message>
    <message>
        <source>No verdict: the frames do not all show the same picture.</source>
        <translation>Kein Urteil: Die Bilder zeigen nicht alle dasselbe.</translation>
    </message>
    <message>
        <source>The pictures differ by %1 codes of 8 bits, which is what the tolerance allows.</source>
        <translation>Die Bilder weichen um %1 Stufen bei 8 Bit voneinander ab, was die Toleranz zulässt.</translation>
    </message>
    <message>
        <source>The pictures differ by %1 codes of 8 bits.</source>
        <translation>Die Bilder weichen um %1 Stufen bei 8 Bit voneinander ab.</translation>
    </message>
    <message>
        <source>One of them is left out, since the source is too dark there.</source>
        <translation>Eines davon wurde ausgelassen, weil die Quelle dort zu dunkel ist.</translation>
    </message>
    <message>
        <source>%1 of them are left out, since the source is too dark there.</source>
        <translation>%1 davon wurden ausgelassen, weil die Quelle dort zu dunkel ist.</translation>
    </message>
    <message>
        <source>One of them does not show the same picture.</source>
        <translation>Eines davon zeigt nicht dasselbe.</translation>
    </message>
    <message>
        <source>One of them differs, and all together do not: this is about the one that differs most.</source>
        <translation>Eines davon weicht ab, alle zusammen nicht: Hier geht es um das, das am meisten abweicht.</translation>
    </message>
    <message>
        <source>%1 of them differ, and all together do not: this is about the one that differs most.</source>
        <translation>%1 davon weichen ab, alle zusammen nicht: Hier geht es um das, das am meisten abweicht.</translation>
    </message>
    <message>
        <source>Export again, without what was done to parts of the picture.</source>
        <translation>Exportieren Sie noch einmal, ohne das, was an Teilen des Bildes geändert wurde.</translation>
    </message>
    <message>
        <source>Compare movies that begin with the same picture and have the same cuts.</source>
        <translation>Vergleichen Sie Filme, die mit demselben Bild beginnen und dieselben Schnitte haben.</translation>
    </message>
    <message>
        <source>No verdict: the movies do not show the same pictures.</source>
        <translation>Kein Urteil: Die Filme zeigen nicht dieselben Bilder.</translation>
    </message>
    <message>
        <source>No verdict: the pictures are black, or of one color.</source>
        <translation>Kein Urteil: Die Bilder sind schwarz oder einfarbig.</translation>
    </message>
    <message>
        <source>No verdict: there is too little in the pictures to tell from.</source>
        <translation>Kein Urteil: In den Bildern ist zu wenig, um etwas zu sagen.</translation>
    </message>
    <message>
        <source>Nothing of the destination was found in the source.</source>
        <translation>Nichts vom Ziel wurde in der Quelle gefunden.</translation>
    </message>
    <message>
        <source>One of them is not measured: it is black, or of one color.</source>
        <translation>Eines davon wird nicht gemessen: Es ist schwarz oder einfarbig.</translation>
    </message>
    <message>
        <source>%1 of them are not measured: they are black, or of one color.</source>
        <translation>%1 davon werden nicht gemessen: Sie sind schwarz oder einfarbig.</translation>
    </message>
    <message>
        <source>Compare a movie with the one that it was made from.</source>
        <translation>Vergleichen Sie einen Film mit dem, aus dem er gemacht wurde.</translation>
    </message>
    <message>
        <source>Look at both movies, and check single frames.</source>
        <translation>Sehen Sie sich beide Filme an, und prüfen Sie einzelne Bilder.</translation>
    </message>
    <message>
        <source>Compare movies with more in them.</source>
        <translation>Vergleichen Sie Filme, in denen mehr zu sehen ist.</translation>
    </message>
</context>
<context>
    <name>FlattenedSave</name>
    <message>
        <source>Saving %1…</source>
        <translation>%1 wird gespeichert&#xa0;…</translation>
    </message>
</context>
<context>
    <name>HttpsConnection</name>
    <message>
        <source>The request timed out.</source>
        <translation>Der Server hat nicht rechtzeitig geantwortet.</translation>
    </message>
    <message>
        <source>The server leads to another address, which is not followed.</source>
        <translation>Der Server verweist auf eine andere Adresse, der nicht gefolgt wird.</translation>
    </message>
    <message>
        <source>The server closed the connection without an answer.</source>
        <translation>Der Server hat die Verbindung ohne Antwort geschlossen.</translation>
    </message>
</context>
<context>
    <name>KeyTable</name>
    <message>
        <source>Keys</source>
        <translation>Tastenkürzel</translation>
    </message>
</context>
<context>
    <name>LumacheckAppDelegate</name>
    <message>
        <source>Leave full screen</source>
        <translation>Vollbild verlassen</translation>
    </message>
    <message>
        <source>Packing… Files collected: %1</source>
        <translation>Wird gepackt&#xa0;… Gesammelte Dateien: %1</translation>
    </message>
    <message>
        <source>Files collected: %1</source>
        <translation>Gesammelte Dateien: %1</translation>
    </message>
    <message>
        <source>Gathering logs…</source>
        <translation>Protokolle werden gesammelt&#xa0;…</translation>
    </message>
    <message>
        <source>Open the source movie</source>
        <translation>Quellfilm öffnen</translation>
    </message>
    <message>
        <source>Open the destination movie</source>
        <translation>Zielfilm öffnen</translation>
    </message>
    <message>
        <source>Save the destination as</source>
        <translation>Zielfilm speichern unter</translation>
    </message>
</context>
<context>
    <name>MainInterface</name>
    <message>
        <source>%1: timecode</source>
        <extracomment>%1: the side, &quot;Source&quot; or &quot;Destination&quot;; so in all that begins with it. Screen readers say these.</extracomment>
        <translation>%1: Timecode</translation>
    </message>
    <message>
        <source>Type a timecode and press Return to go there</source>
        <translation>Timecode eingeben und mit der Eingabetaste dorthin springen</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <source>Drop the source movie here</source>
        <translation>Quellfilm hier ablegen</translation>
    </message>
    <message>
        <source>Path of the source movie</source>
        <translation>Pfad des Quellfilms</translation>
    </message>
    <message>
        <source>Destination</source>
        <translation>Ziel</translation>
    </message>
    <message>
        <source>Drop the destination movie here</source>
        <translation>Zielfilm hier ablegen</translation>
    </message>
    <message>
        <source>Path of the destination movie</source>
        <translation>Pfad des Zielfilms</translation>
    </message>
    <message>
        <source>&amp;Send anonymous usage data to Quorvane</source>
        <translation>Anonyme &amp;Nutzungsdaten an Quorvane senden</translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>It is anonymous: when Lumacheck starts, and on which system.
Nothing of your movies, nor their names.</source>
        <translation>Anonym: wann Lumacheck startet und auf welchem System.
Nichts aus Ihren Filmen, auch nicht deren Namen.</translation>
    </message>
    <message>
        <source>%1: path</source>
        <translation>%1: Pfad</translation>
    </message>
    <message>
        <source>Browse…</source>
        <translation>Durchsuchen&#xa0;…</translation>
    </message>
    <message>
        <source>%1: browse</source>
        <translation>%1: durchsuchen</translation>
    </message>
    <message>
        <source>%1: movie</source>
        <translation>%1: Film</translation>
    </message>
    <message>
        <source>Link</source>
        <extracomment>Over the switch that links the playheads</extracomment>
        <translation>Koppeln</translation>
    </message>
    <message>
        <source>Link the playheads</source>
        <translation>Abspielköpfe koppeln</translation>
    </message>
    <message>
        <source>Movies of the same length move together</source>
        <translation>Gleich lange Filme bewegen sich gemeinsam</translation>
    </message>
    <message>
        <source>Swap</source>
        <translation>Tauschen</translation>
    </message>
    <message>
        <source>Swap source and destination</source>
        <translation>Quelle und Ziel tauschen</translation>
    </message>
    <message>
        <source>Source becomes destination, and the other way round</source>
        <translation>Die Quelle wird zum Ziel und umgekehrt</translation>
    </message>
    <message>
        <source>Check</source>
        <translation>Prüfen</translation>
    </message>
    <message>
        <source>Sync Metadata</source>
        <translation>Metadaten abgleichen</translation>
    </message>
    <message>
        <source>Copies the source&apos;s colour metadata onto the destination</source>
        <extracomment>The report is in English whatever the language, and calls this button &quot;Sync Metadata&quot;: say so in a translation.</extracomment>
        <translation>Überträgt die Farbmetadaten der Quelle auf das Ziel (im Bericht: „Sync Metadata“)</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Saves the destination&apos;s metadata in place</source>
        <translation>Speichert die Metadaten des Ziels in dessen Datei</translation>
    </message>
    <message>
        <source>Save As…</source>
        <translation>Speichern unter&#xa0;…</translation>
    </message>
    <message>
        <source>Saves the destination as a self-contained copy</source>
        <translation>Speichert das Ziel als eigenständige Kopie</translation>
    </message>
    <message>
        <source>Results</source>
        <translation>Ergebnisse</translation>
    </message>
    <message>
        <source>Play or pause</source>
        <translation>Wiedergabe oder Pause</translation>
    </message>
    <message>
        <source>Play backwards; again for faster</source>
        <translation>Rückwärts abspielen; nochmals: schneller</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Play; again for faster</source>
        <translation>Abspielen; nochmals: schneller</translation>
    </message>
    <message>
        <source>One frame back</source>
        <translation>Ein Bild zurück</translation>
    </message>
    <message>
        <source>One frame forward</source>
        <translation>Ein Bild vor</translation>
    </message>
    <message>
        <source>One second back</source>
        <translation>Eine Sekunde zurück</translation>
    </message>
    <message>
        <source>One second forward</source>
        <translation>Eine Sekunde vor</translation>
    </message>
    <message>
        <source>To the beginning</source>
        <translation>Zum Anfang</translation>
    </message>
    <message>
        <source>To the last frame</source>
        <translation>Zum letzten Bild</translation>
    </message>
    <message>
        <source>Compares the two frames shown</source>
        <translation>Vergleicht die beiden gezeigten Bilder</translation>
    </message>
    <message>
        <source>Cancel Scan</source>
        <translation>Scan abbrechen</translation>
    </message>
    <message>
        <source>Both movies move to the same pictures, as the scan has found them</source>
        <translation>Beide Filme gehen zu denselben Bildern, wie der Scan sie gefunden hat</translation>
    </message>
    <message>
        <source>Ends the scan; what was found until then stays</source>
        <translation>Beendet den Scan; was bis dahin gefunden wurde, bleibt</translation>
    </message>
    <message>
        <source>Compares all frames of both movies, wherever they lie</source>
        <translation>Vergleicht alle Bilder beider Filme, wo immer sie liegen</translation>
    </message>
    <message>
        <source>Scan</source>
        <translation>Scannen</translation>
    </message>
</context>
<context>
    <name>MenuBar</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Open Source…</source>
        <translation>&amp;Quelle öffnen&#xa0;…</translation>
    </message>
    <message>
        <source>Open &amp;Destination…</source>
        <translation>&amp;Ziel öffnen&#xa0;…</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Speichern</translation>
    </message>
    <message>
        <source>Save &amp;As…</source>
        <translation>Speichern &amp;unter&#xa0;…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>Pr&amp;eferences…</source>
        <translation>Ei&amp;nstellungen&#xa0;…</translation>
    </message>
    <message>
        <source>&amp;Movies</source>
        <translation>&amp;Filme</translation>
    </message>
    <message>
        <source>&amp;Check</source>
        <translation>&amp;Prüfen</translation>
    </message>
    <message>
        <source>Sync &amp;Metadata</source>
        <translation>&amp;Metadaten abgleichen</translation>
    </message>
    <message>
        <source>&amp;Swap Movies</source>
        <translation>Filme &amp;tauschen</translation>
    </message>
    <message>
        <source>&amp;Link Playheads</source>
        <translation>Abspielköpfe &amp;koppeln</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Full Screen</source>
        <translation>&amp;Vollbild</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;User Manual</source>
        <translation>&amp;Benutzerhandbuch</translation>
    </message>
    <message>
        <source>&amp;Keys</source>
        <translation>&amp;Tastenkürzel</translation>
    </message>
    <message>
        <source>&amp;Vextrel Home Page</source>
        <translation>&amp;Vextrel-Website</translation>
    </message>
    <message>
        <source>&amp;Quorvane Home Page</source>
        <translation>&amp;Quorvane-Website</translation>
    </message>
    <message>
        <source>&amp;Support</source>
        <translation>&amp;Support</translation>
    </message>
    <message>
        <source>Report a &amp;Bug…</source>
        <translation>Fehler &amp;melden&#xa0;…</translation>
    </message>
    <message>
        <source>Suggest a &amp;Feature…</source>
        <translation>&amp;Funktion vorschlagen&#xa0;…</translation>
    </message>
    <message>
        <source>View &amp;Log</source>
        <translation>&amp;Protokoll anzeigen</translation>
    </message>
    <message>
        <source>View &amp;Task Log</source>
        <translation>Tas&amp;k-Protokoll anzeigen</translation>
    </message>
    <message>
        <source>&amp;Gather Logs…</source>
        <translation>Protokolle s&amp;ammeln&#xa0;…</translation>
    </message>
    <message>
        <source>Check for U&amp;pdates…</source>
        <translation>Nach Aktualisierungen s&amp;uchen&#xa0;…</translation>
    </message>
    <message>
        <source>&amp;About Lumacheck</source>
        <translation>Üb&amp;er Lumacheck</translation>
    </message>
    <message>
        <source>&amp;Recent Pairs</source>
        <translation>&amp;Letzte Paare</translation>
    </message>
    <message>
        <source>&amp;Forget These Pairs</source>
        <translation>Diese Paare &amp;vergessen</translation>
    </message>
    <message>
        <source>C&amp;ancel Scan</source>
        <translation>Scan &amp;abbrechen</translation>
    </message>
    <message>
        <source>Sc&amp;an</source>
        <translation>Sc&amp;annen</translation>
    </message>
</context>
<context>
    <name>Message</name>
    <message>
        <source>Done</source>
        <translation>Erledigt</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Failure</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Hinweis</translation>
    </message>
</context>
<context>
    <name>MessageLine</name>
    <message>
        <source>Message</source>
        <extracomment>What the window says of the latest action</extracomment>
        <translation>Meldung</translation>
    </message>
</context>
<context>
    <name>MessageWords</name>
    <message>
        <source>%1 s</source>
        <extracomment>%1: a number of seconds</extracomment>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 min %2 s</source>
        <extracomment>%1: minutes. %2: seconds</extracomment>
        <translation>%1 min %2 s</translation>
    </message>
    <message>
        <source>less than %1 s</source>
        <extracomment>%1: a number of seconds</extracomment>
        <translation>weniger als %1 s</translation>
    </message>
</context>
<context>
    <name>MovieFacts</name>
    <message>
        <source>none</source>
        <extracomment>A movie has no such property</extracomment>
        <translation>keines</translation>
    </message>
    <message>
        <source>unknown</source>
        <extracomment>It is not known of a movie</extracomment>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>ICC</source>
        <translation>ICC-Profil</translation>
    </message>
    <message>
        <source>%1 bytes</source>
        <translation>%1 Bytes</translation>
    </message>
    <message>
        <source>It is not stated, and assumed.</source>
        <translation>Er ist nicht angegeben, sondern angenommen.</translation>
    </message>
    <message>
        <source>full</source>
        <translation>voll</translation>
    </message>
    <message>
        <source>video</source>
        <translation>Video</translation>
    </message>
    <message>
        <source>Primaries: %1
Transfer function: %2
Matrix: %3</source>
        <extracomment>%1 to %3: names of ITU-T H.273</extracomment>
        <translation>Primärfarben: %1
Transferfunktion: %2
Matrix: %3</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Codec</source>
        <translation>Codec</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Rate</source>
        <extracomment>Frames a second</extracomment>
        <translation>Rate</translation>
    </message>
    <message>
        <source>Range</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>Gamma</translation>
    </message>
    <message>
        <source>Colour</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>Profile</source>
        <extracomment>An ICC profile</extracomment>
        <translation>Profil</translation>
    </message>
</context>
<context>
    <name>MoviePanel</name>
    <message>
        <source>Movies (%1)</source>
        <translation>Filme (%1)</translation>
    </message>
</context>
<context>
    <name>MovieReasons</name>
    <message>
        <source>the decoder module cannot be loaded: %1</source>
        <translation>das Decoder-Modul lässt sich nicht laden: %1</translation>
    </message>
    <message>
        <source>no reason given</source>
        <translation>ohne Angabe eines Grundes</translation>
    </message>
    <message>
        <source>the decoder module has no entry of that name</source>
        <translation>das Decoder-Modul hat keinen Einsprungpunkt dieses Namens</translation>
    </message>
    <message>
        <source>the decoder module belongs to another version of this program</source>
        <translation>das Decoder-Modul gehört zu einer anderen Version dieses Programms</translation>
    </message>
    <message>
        <source>there is no decoder for the codec &apos;%1&apos;</source>
        <extracomment>%1: four characters that name the codec</extracomment>
        <translation>für den Codec „%1“ gibt es keinen Decoder</translation>
    </message>
    <message>
        <source>the decoder cannot be opened: %1</source>
        <translation>der Decoder lässt sich nicht öffnen: %1</translation>
    </message>
    <message>
        <source>there is not enough memory for a decoder</source>
        <translation>für einen Decoder reicht der Speicher nicht</translation>
    </message>
    <message>
        <source>the movie has no video track</source>
        <translation>der Film hat keine Videospur</translation>
    </message>
    <message>
        <source>there is no such track</source>
        <translation>diese Spur gibt es nicht</translation>
    </message>
    <message>
        <source>the track holds no pictures</source>
        <translation>die Spur enthält keine Bilder</translation>
    </message>
    <message>
        <source>the video track has no image description</source>
        <translation>die Videospur hat keine Bildbeschreibung</translation>
    </message>
    <message>
        <source>the image description cannot be understood</source>
        <translation>die Bildbeschreibung ist unverständlich</translation>
    </message>
    <message>
        <source>the track&apos;s media is in another file</source>
        <translation>die Mediendaten der Spur liegen in einer anderen Datei</translation>
    </message>
    <message>
        <source>the samples lie in another file, and such references are not followed</source>
        <translation>die Samples liegen in einer anderen Datei, und solchen Verweisen wird nicht gefolgt</translation>
    </message>
    <message>
        <source>the samples are encrypted</source>
        <translation>die Samples sind verschlüsselt</translation>
    </message>
    <message>
        <source>the samples overlap</source>
        <translation>die Samples überlappen sich</translation>
    </message>
    <message>
        <source>there is no such sample</source>
        <translation>dieses Sample gibt es nicht</translation>
    </message>
    <message>
        <source>the sample tables do not lead to the sample</source>
        <translation>die Sample-Tabellen führen nicht zum Sample</translation>
    </message>
    <message>
        <source>the sample lies past the end of the file</source>
        <translation>das Sample liegt hinter dem Ende der Datei</translation>
    </message>
    <message>
        <source>the sample %1 cannot be read: %2</source>
        <extracomment>%1: the sample&apos;s number. %2: why</extracomment>
        <translation>das Sample %1 lässt sich nicht lesen: %2</translation>
    </message>
    <message>
        <source>the sample %1 is too large for its picture</source>
        <translation>das Sample %1 ist zu groß für sein Bild</translation>
    </message>
    <message>
        <source>there is not enough memory for the sample %1</source>
        <translation>für das Sample %1 reicht der Speicher nicht</translation>
    </message>
    <message>
        <source>the file became shorter</source>
        <translation>die Datei ist kürzer geworden</translation>
    </message>
    <message>
        <source>there is no such file</source>
        <translation>diese Datei gibt es nicht</translation>
    </message>
    <message>
        <source>there is no permission to read the file</source>
        <translation>die Leseberechtigung für die Datei fehlt</translation>
    </message>
    <message>
        <source>the system says &quot;%1&quot;</source>
        <translation>das System meldet „%1“</translation>
    </message>
    <message>
        <source>the frame cannot be decoded: %1</source>
        <translation>das Bild lässt sich nicht decodieren: %1</translation>
    </message>
    <message>
        <source>the frame cannot be used: %1</source>
        <translation>das Bild ist nicht verwendbar: %1</translation>
    </message>
    <message>
        <source>the decoder gave no picture</source>
        <translation>der Decoder lieferte kein Bild</translation>
    </message>
    <message>
        <source>the pixel format %1 lies outside of memory</source>
        <extracomment>%1: what libav calls the pixel format, here and below</extracomment>
        <translation>das Pixelformat %1 liegt außerhalb des Arbeitsspeichers</translation>
    </message>
    <message>
        <source>the pixel format %1 has floating-point samples</source>
        <translation>das Pixelformat %1 hat Gleitkommawerte</translation>
    </message>
    <message>
        <source>the pixel format %1 is a sensor&apos;s mosaic</source>
        <translation>das Pixelformat %1 ist das Mosaik eines Sensors</translation>
    </message>
    <message>
        <source>the pixel format %1 is not known</source>
        <translation>das Pixelformat %1 ist nicht bekannt</translation>
    </message>
    <message>
        <source>%1 (atom %2 at offset %3)</source>
        <extracomment>%1: what is wrong. %2: a path of atoms such as moov/trak. %3: a number of bytes from the file&apos;s start</extracomment>
        <translation>%1 (Atom %2 an Position %3)</translation>
    </message>
    <message>
        <source>Cannot read the movie: %1.</source>
        <extracomment>%1: what is wrong, a clause</extracomment>
        <translation>Der Film lässt sich nicht lesen: %1.</translation>
    </message>
    <message>
        <source>Cannot read &quot;%1&quot;: %2.</source>
        <extracomment>%1: the file. %2: what is wrong, a clause</extracomment>
        <translation>„%1“ lässt sich nicht lesen: %2.</translation>
    </message>
    <message>
        <source>there is no such folder</source>
        <translation>diesen Ordner gibt es nicht</translation>
    </message>
    <message>
        <source>there is no permission to write the file</source>
        <translation>die Schreibberechtigung für die Datei fehlt</translation>
    </message>
    <message>
        <source>there is no permission to write there</source>
        <translation>die Berechtigung, dorthin zu schreiben, fehlt</translation>
    </message>
    <message>
        <source>the file system is read-only</source>
        <translation>das Dateisystem ist schreibgeschützt</translation>
    </message>
    <message>
        <source>the disk is full</source>
        <translation>der Datenträger ist voll</translation>
    </message>
    <message>
        <source>the disk quota is used up</source>
        <translation>das Speicherkontingent ist ausgeschöpft</translation>
    </message>
    <message>
        <source>there is not enough space on the disk</source>
        <translation>auf dem Datenträger ist nicht genug Platz</translation>
    </message>
    <message>
        <source>the file would become larger than is allowed</source>
        <translation>die Datei würde größer, als erlaubt ist</translation>
    </message>
    <message>
        <source>the file would be larger than the system allows</source>
        <translation>die Datei wäre größer, als das System erlaubt</translation>
    </message>
    <message>
        <source>too many symbolic links follow each other</source>
        <translation>zu viele symbolische Verweise folgen aufeinander</translation>
    </message>
    <message>
        <source>another program has the file open for writing</source>
        <translation>ein anderes Programm hat die Datei zum Schreiben geöffnet</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <extracomment>%1: what is wrong. %2: what was being done, one of the next rows</extracomment>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>looking at the file</source>
        <translation>beim Abfragen der Datei</translation>
    </message>
    <message>
        <source>reading the file</source>
        <translation>beim Lesen der Datei</translation>
    </message>
    <message>
        <source>writing the file</source>
        <translation>beim Schreiben der Datei</translation>
    </message>
    <message>
        <source>bringing the file onto the disk</source>
        <translation>beim Übertragen der Datei auf den Datenträger</translation>
    </message>
    <message>
        <source>setting the length of the file</source>
        <translation>beim Setzen der Dateilänge</translation>
    </message>
    <message>
        <source>setting the time of modification</source>
        <translation>beim Setzen der Änderungszeit</translation>
    </message>
    <message>
        <source>reserving room</source>
        <translation>beim Reservieren von Platz</translation>
    </message>
    <message>
        <source>a file name cannot hold a zero byte</source>
        <translation>ein Dateiname kann kein Nullbyte enthalten</translation>
    </message>
    <message>
        <source>it is a folder</source>
        <translation>es ist ein Ordner</translation>
    </message>
    <message>
        <source>it is not a regular file</source>
        <translation>es ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>the file is empty</source>
        <translation>die Datei ist leer</translation>
    </message>
    <message>
        <source>the file became shorter while it was read</source>
        <translation>die Datei ist beim Lesen kürzer geworden</translation>
    </message>
    <message>
        <source>the file was changed since it was opened</source>
        <translation>die Datei wurde seit dem Öffnen geändert</translation>
    </message>
    <message>
        <source>the file was changed on disk since it was loaded</source>
        <translation>die Datei wurde seit dem Laden auf dem Datenträger geändert</translation>
    </message>
    <message>
        <source>another program is saving the file, or has locked it</source>
        <translation>ein anderes Programm speichert die Datei gerade oder hat sie gesperrt</translation>
    </message>
    <message>
        <source>a write that would reach media data was held back</source>
        <translation>ein Schreiben, das Mediendaten erreicht hätte, wurde zurückgehalten</translation>
    </message>
    <message>
        <source>a cut that would reach media data was held back</source>
        <translation>ein Kürzen, das Mediendaten erreicht hätte, wurde zurückgehalten</translation>
    </message>
    <message>
        <source>what was written does not read back</source>
        <translation>was geschrieben wurde, liest sich anders zurück</translation>
    </message>
    <message>
        <source>another file has taken that name meanwhile</source>
        <translation>inzwischen trägt eine andere Datei diesen Namen</translation>
    </message>
    <message>
        <source>the file is complete, but whether its name would outlast a power failure is uncertain: %1</source>
        <extracomment>%1: what the system answered</extracomment>
        <translation>die Datei ist vollständig, doch ob ihr Name einen Stromausfall überdauern würde, ist ungewiss: %1</translation>
    </message>
    <message>
        <source>it was cancelled</source>
        <translation>es wurde abgebrochen</translation>
    </message>
    <message>
        <source>the size of the atom is below that of its header</source>
        <translation>die Größe des Atoms liegt unter der seines Kopfes</translation>
    </message>
    <message>
        <source>the atom reaches past the end of its parent</source>
        <translation>das Atom reicht über das Ende des umgebenden hinaus</translation>
    </message>
    <message>
        <source>its parent holds too many atoms</source>
        <translation>das umgebende Atom enthält zu viele Atome</translation>
    </message>
    <message>
        <source>there are bytes behind the last atom</source>
        <translation>hinter dem letzten Atom stehen noch Bytes</translation>
    </message>
    <message>
        <source>there are too many atoms in the file</source>
        <translation>die Datei enthält zu viele Atome</translation>
    </message>
    <message>
        <source>it is not a movie</source>
        <translation>es ist kein Film</translation>
    </message>
    <message>
        <source>there is no movie atom</source>
        <translation>es gibt kein Film-Atom</translation>
    </message>
    <message>
        <source>there is no movie atom among its first atoms</source>
        <translation>unter den ersten Atomen ist kein Film-Atom</translation>
    </message>
    <message>
        <source>there is no movie atom; the walk over the atoms ends at a damaged one, or the file was cut</source>
        <translation>es gibt kein Film-Atom; der Gang durch die Atome endet an einem beschädigten, oder die Datei wurde abgeschnitten</translation>
    </message>
    <message>
        <source>the movie atom reaches past the end of the file</source>
        <translation>das Film-Atom reicht über das Ende der Datei hinaus</translation>
    </message>
    <message>
        <source>the movie atom reaches over other atoms of the file</source>
        <translation>das Film-Atom reicht über andere Atome der Datei</translation>
    </message>
    <message>
        <source>the movie atom is too large</source>
        <translation>das Film-Atom ist zu groß</translation>
    </message>
    <message>
        <source>the movie atom would become too large</source>
        <translation>das Film-Atom würde zu groß</translation>
    </message>
    <message>
        <source>the movie atom is malformed</source>
        <translation>das Film-Atom ist fehlerhaft aufgebaut</translation>
    </message>
    <message>
        <source>it is not one whole movie atom</source>
        <translation>es ist kein einzelnes, vollständiges Film-Atom</translation>
    </message>
    <message>
        <source>the movie atom has no movie header</source>
        <translation>das Film-Atom hat keinen Film-Kopf</translation>
    </message>
    <message>
        <source>the movie header has no time scale</source>
        <translation>der Film-Kopf hat keine Zeitskala</translation>
    </message>
    <message>
        <source>it only refers to other movies</source>
        <translation>er verweist nur auf andere Filme</translation>
    </message>
    <message>
        <source>the movie has too many tracks</source>
        <translation>der Film hat zu viele Spuren</translation>
    </message>
    <message>
        <source>the movie fragments are too large</source>
        <translation>die Fragmente des Films sind zu groß</translation>
    </message>
    <message>
        <source>the compressed movie atom is incomplete</source>
        <translation>das komprimierte Film-Atom ist unvollständig</translation>
    </message>
    <message>
        <source>the compressed movie atom claims to be too large</source>
        <translation>das komprimierte Film-Atom gibt eine zu große Größe an</translation>
    </message>
    <message>
        <source>the compressed movie atom is damaged</source>
        <translation>das komprimierte Film-Atom ist beschädigt</translation>
    </message>
    <message>
        <source>no movie atom comes out of it</source>
        <translation>es ergibt kein Film-Atom</translation>
    </message>
    <message>
        <source>the movie atom is compressed with the unknown method &apos;%1&apos;</source>
        <extracomment>%1: four characters that name the method</extracomment>
        <translation>das Film-Atom ist mit dem unbekannten Verfahren „%1“ komprimiert</translation>
    </message>
    <message>
        <source>there is no such atom</source>
        <translation>dieses Atom gibt es nicht</translation>
    </message>
    <message>
        <source>there is no such sample description</source>
        <translation>diese Sample-Beschreibung gibt es nicht</translation>
    </message>
    <message>
        <source>the size of the new sample description is not its length</source>
        <translation>die Größe der neuen Sample-Beschreibung ist nicht ihre Länge</translation>
    </message>
    <message>
        <source>there are several where only one can count</source>
        <translation>es gibt mehrere, wo nur eines gelten kann</translation>
    </message>
    <message>
        <source>the chunks are not in order</source>
        <translation>die Chunks sind nicht in ihrer Reihenfolge</translation>
    </message>
    <message>
        <source>a table of file offsets cannot be understood</source>
        <translation>eine Tabelle von Dateipositionen ist unverständlich</translation>
    </message>
    <message>
        <source>it holds places in the file that cannot be moved along</source>
        <translation>es enthält Dateipositionen, die nicht mitgeführt werden können</translation>
    </message>
    <message>
        <source>no movie is loaded</source>
        <translation>es ist kein Film geladen</translation>
    </message>
    <message>
        <source>there is no movie to save</source>
        <translation>es gibt keinen Film zu speichern</translation>
    </message>
    <message>
        <source>there is no movie to write</source>
        <translation>es gibt keinen Film zu schreiben</translation>
    </message>
    <message>
        <source>the file now has other tracks</source>
        <translation>die Datei hat jetzt andere Spuren</translation>
    </message>
    <message>
        <source>the changed movie atom has other tracks</source>
        <translation>das geänderte Film-Atom hat andere Spuren</translation>
    </message>
    <message>
        <source>the movie is fragmented</source>
        <translation>der Film ist fragmentiert</translation>
    </message>
    <message>
        <source>the movie atom is compressed</source>
        <translation>das Film-Atom ist komprimiert</translation>
    </message>
    <message>
        <source>its movie atom is compressed</source>
        <translation>sein Film-Atom ist komprimiert</translation>
    </message>
    <message>
        <source>an atom has no size of its own</source>
        <translation>ein Atom hat keine eigene Größe</translation>
    </message>
    <message>
        <source>its atoms do not end where the file does</source>
        <translation>die Atome enden nicht, wo die Datei endet</translation>
    </message>
    <message>
        <source>it holds several movies</source>
        <translation>die Datei enthält mehrere Filme</translation>
    </message>
    <message>
        <source>it holds a second movie</source>
        <translation>die Datei enthält einen zweiten Film</translation>
    </message>
    <message>
        <source>the atom is too large to be looked through</source>
        <translation>das Atom ist zu groß, um durchsucht zu werden</translation>
    </message>
    <message>
        <source>media data lie inside the movie atom</source>
        <translation>Mediendaten liegen im Film-Atom</translation>
    </message>
    <message>
        <source>media data lie inside a second movie atom</source>
        <translation>Mediendaten liegen in einem zweiten Film-Atom</translation>
    </message>
    <message>
        <source>media data lie past the end of the file</source>
        <translation>Mediendaten liegen hinter dem Ende der Datei</translation>
    </message>
    <message>
        <source>media data lie in the free space beside the movie atom</source>
        <translation>Mediendaten liegen im freien Raum neben dem Film-Atom</translation>
    </message>
    <message>
        <source>media data lie in the free space at the end, where the movie atom would go</source>
        <translation>Mediendaten liegen im freien Raum am Ende, wohin das Film-Atom käme</translation>
    </message>
    <message>
        <source>the last mdat has no size of its own and is too large to be given one</source>
        <translation>das letzte mdat hat keine eigene Größe und ist zu groß, um eine zu bekommen</translation>
    </message>
    <message>
        <source>the last mdat has no size of its own and cannot safely be given one</source>
        <translation>das letzte mdat hat keine eigene Größe und kann nicht gefahrlos eine bekommen</translation>
    </message>
    <message>
        <source>chunk %1 of track %2 lies past the end of the file</source>
        <extracomment>%1: a chunk&apos;s number. %2: a track&apos;s number, here and below</extracomment>
        <translation>Chunk %1 der Spur %2 liegt hinter dem Ende der Datei</translation>
    </message>
    <message>
        <source>chunk %1 of track %2 lies past the end of &quot;%3&quot;</source>
        <extracomment>%3: a file</extracomment>
        <translation>Chunk %1 der Spur %2 liegt hinter dem Ende von „%3“</translation>
    </message>
    <message>
        <source>chunk %1 of track %2 does not lie inside one atom of media data</source>
        <translation>Chunk %1 der Spur %2 liegt nicht innerhalb eines Atoms mit Mediendaten</translation>
    </message>
    <message>
        <source>some of its media is in another file that a reference of type &apos;%1&apos; does not name</source>
        <extracomment>%1: four characters that name a kind of reference</extracomment>
        <translation>ein Teil der Mediendaten liegt in einer anderen Datei, die ein Verweis der Art „%1“ nicht nennt</translation>
    </message>
    <message>
        <source>some of its media is in the resource fork of &quot;%1&quot;, which cannot be read</source>
        <extracomment>%1: a file, here and below</extracomment>
        <translation>ein Teil der Mediendaten liegt im Resource-Zweig von „%1“, der sich nicht lesen lässt</translation>
    </message>
    <message>
        <source>some of its media is in &quot;%1&quot;, which cannot be read: %2</source>
        <extracomment>%2: why</extracomment>
        <translation>ein Teil der Mediendaten liegt in „%1“, und diese Datei lässt sich nicht lesen: %2</translation>
    </message>
    <message>
        <source>some of its media is in &quot;%1&quot;, which is not beside it</source>
        <translation>ein Teil der Mediendaten liegt in „%1“, und diese Datei liegt nicht daneben</translation>
    </message>
    <message>
        <source>the video track has no samples</source>
        <translation>die Videospur hat keine Samples</translation>
    </message>
    <message>
        <source>there is no such sound track</source>
        <translation>diese Tonspur gibt es nicht</translation>
    </message>
    <message>
        <source>the sound track has no samples</source>
        <translation>die Tonspur hat keine Samples</translation>
    </message>
    <message>
        <source>the track has no sound description</source>
        <translation>die Spur hat keine Tonbeschreibung</translation>
    </message>
    <message>
        <source>the sound description is too short</source>
        <translation>die Tonbeschreibung ist zu kurz</translation>
    </message>
    <message>
        <source>a sound of %1 channels cannot be played</source>
        <translation>Ton mit %1 Kanälen lässt sich nicht abspielen</translation>
    </message>
    <message>
        <source>the rate of the sound is out of bounds</source>
        <translation>die Abtastrate des Tons liegt außerhalb der Grenzen</translation>
    </message>
    <message>
        <source>the rate of the sound changes within the track</source>
        <translation>die Abtastrate des Tons wechselt innerhalb der Spur</translation>
    </message>
    <message>
        <source>the kind of sound changes within the track</source>
        <translation>die Art des Tons wechselt innerhalb der Spur</translation>
    </message>
    <message>
        <source>the sound reaches past the end of the file</source>
        <translation>der Ton reicht über das Ende der Datei hinaus</translation>
    </message>
    <message>
        <source>a sample of the sound is too large</source>
        <translation>ein Sample des Tons ist zu groß</translation>
    </message>
    <message>
        <source>the sound cannot be decoded: %1</source>
        <translation>der Ton lässt sich nicht decodieren: %1</translation>
    </message>
    <message>
        <source>Cannot save the movie: %1.</source>
        <translation>Der Film lässt sich nicht speichern: %1.</translation>
    </message>
    <message>
        <source>Cannot save &quot;%1&quot;: %2.</source>
        <translation>„%1“ lässt sich nicht speichern: %2.</translation>
    </message>
</context>
<context>
    <name>OpeningMessages</name>
    <message>
        <source>Opened &quot;%1&quot; as the source.</source>
        <translation>„%1“ ist als Quelle geöffnet.</translation>
    </message>
    <message>
        <source>Opened &quot;%1&quot; as the destination.</source>
        <translation>„%1“ ist als Ziel geöffnet.</translation>
    </message>
    <message>
        <source>It ends in the middle: its last pictures are missing.</source>
        <translation>Der Film bricht mittendrin ab: Seine letzten Bilder fehlen.</translation>
    </message>
    <message>
        <source>It has no pictures.</source>
        <translation>Der Film hat keine Bilder.</translation>
    </message>
    <message>
        <source>it is not a QuickTime or MP4 movie</source>
        <translation>sie ist kein QuickTime- oder MP4-Film</translation>
    </message>
    <message>
        <source>it is not a QuickTime or MP4 movie, or was never finished</source>
        <translation>sie ist kein QuickTime- oder MP4-Film oder wurde nie fertig</translation>
    </message>
    <message>
        <source>it ends in the middle</source>
        <translation>sie bricht mittendrin ab</translation>
    </message>
    <message>
        <source>it ends in the middle, or is damaged</source>
        <translation>sie bricht mittendrin ab oder ist beschädigt</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be opened as the source: %2.</source>
        <extracomment>%1: a file. %2: why, a clause</extracomment>
        <translation>„%1“ lässt sich nicht als Quelle öffnen: %2.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be opened as the destination: %2.</source>
        <translation>„%1“ lässt sich nicht als Ziel öffnen: %2.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be opened:
%2.</source>
        <translation>„%1“ lässt sich nicht öffnen:
%2.</translation>
    </message>
    <message>
        <source>The source cannot be shown: %1.</source>
        <extracomment>%1: what the system says</extracomment>
        <translation>Die Quelle kann nicht gezeigt werden: %1.</translation>
    </message>
    <message>
        <source>The destination cannot be shown: %1.</source>
        <translation>Das Ziel kann nicht gezeigt werden: %1.</translation>
    </message>
    <message>
        <source>There is no source now.</source>
        <translation>Es gibt jetzt keine Quelle.</translation>
    </message>
    <message>
        <source>There is no destination now.</source>
        <translation>Es gibt jetzt kein Ziel.</translation>
    </message>
    <message>
        <source>The changes of &quot;%1&quot; were not saved, and are gone.</source>
        <translation>Die Änderungen an „%1“ waren nicht gespeichert und sind verloren.</translation>
    </message>
    <message>
        <source>Nothing was opened: the file&apos;s name is not in UTF-8.</source>
        <translation>Es wurde nichts geöffnet: Der Name der Datei ist nicht in UTF-8.</translation>
    </message>
    <message>
        <source>The pair was not opened: there is no &quot;%1&quot;.</source>
        <translation>Das Paar wurde nicht geöffnet: „%1“ gibt es nicht.</translation>
    </message>
    <message>
        <source>The pair was not opened: there is neither &quot;%1&quot; nor &quot;%2&quot;.</source>
        <translation>Das Paar wurde nicht geöffnet: Es gibt weder „%1“ noch „%2“.</translation>
    </message>
    <message>
        <source>The recent pairs are forgotten.</source>
        <translation>Die letzten Paare sind vergessen.</translation>
    </message>
    <message>
        <source>Of %1 files only the first was opened.</source>
        <extracomment>%1: how many files there were</extracomment>
        <translation>Von %1 Dateien wurde nur die erste geöffnet.</translation>
    </message>
    <message>
        <source>Of %1 files only the first two were opened.</source>
        <translation>Von %1 Dateien wurden nur die ersten beiden geöffnet.</translation>
    </message>
</context>
<context>
    <name>QVMovieView</name>
    <message>
        <source>This movie has no pictures.</source>
        <translation>Dieser Film enthält keine Bilder.</translation>
    </message>
    <message>
        <source>This frame cannot be shown: %1</source>
        <translation>Dieses Bild kann nicht gezeigt werden: %1</translation>
    </message>
</context>
<context>
    <name>SaveMessages</name>
    <message>
        <source>&quot;%1&quot;: %2</source>
        <extracomment>%1: another file than the one before. %2: what is wrong with it, a clause</extracomment>
        <translation>„%1“: %2</translation>
    </message>
    <message>
        <source>It is uncertain whether the save of &quot;%1&quot; counts. Load it again and check.</source>
        <translation>Es ist ungewiss, ob „%1“ gespeichert ist. Bitte neu laden und prüfen.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; has no unsaved changes. The movie on the disk is as it was.</source>
        <translation>„%1“ hat keine ungespeicherten Änderungen. Der Film auf dem Datenträger ist, wie er war.</translation>
    </message>
    <message>
        <source>Saved &quot;%1&quot; in %2. The movie on the disk has the new metadata.</source>
        <extracomment>%1: a file. %2: a time</extracomment>
        <translation>„%1“ wurde in %2 gespeichert. Der Film auf dem Datenträger hat die neuen Metadaten.</translation>
    </message>
    <message>
        <source>Over a network it no longer plays before it is loaded as a whole; a copy does.</source>
        <translation>Über ein Netz spielt er erst, wenn er ganz geladen ist; eine Kopie spielt sofort.</translation>
    </message>
    <message>
        <source>It has %1 names, and was changed under all of them.</source>
        <translation>Er hat %1 Namen und wurde unter allen geändert.</translation>
    </message>
    <message>
        <source>The log tells more of it.</source>
        <translation>Das Protokoll sagt mehr dazu.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be saved in place: %2. Save a copy instead.</source>
        <extracomment>%1: a file. %2: why, a clause</extracomment>
        <translation>„%1“ lässt sich nicht in der eigenen Datei speichern: %2. Bitte eine Kopie speichern.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; was not saved: %2. The movie on the disk is as it was.</source>
        <extracomment>%1: a file. %2: why, a clause</extracomment>
        <translation>„%1“ wurde nicht gespeichert: %2. Der Film auf dem Datenträger ist, wie er war.</translation>
    </message>
    <message>
        <source>Nothing was saved.</source>
        <translation>Es wurde nichts gespeichert.</translation>
    </message>
    <message>
        <source>Saved a copy, &quot;%1&quot; (%2), in %3.</source>
        <extracomment>%1: a file. %2: its size. %3: a time</extracomment>
        <translation>Die Kopie „%1“ (%2) wurde in %3 gespeichert.</translation>
    </message>
    <message>
        <source>It was complete before it could be cancelled.</source>
        <translation>Sie war fertig, bevor sie abgebrochen werden konnte.</translation>
    </message>
    <message>
        <source>The destination&apos;s own file has not been changed.</source>
        <translation>Die Datei des Ziels selbst ist nicht geändert.</translation>
    </message>
    <message>
        <source>The copy &quot;%1&quot; was cancelled. Nothing was left behind.</source>
        <translation>Die Kopie „%1“ wurde abgebrochen. Davon ist nichts übrig.</translation>
    </message>
    <message>
        <source>The copy &quot;%1&quot; may have failed: %2.</source>
        <extracomment>%1: a file. %2: what is wrong with it, a clause</extracomment>
        <translation>Die Kopie „%1“ ist womöglich misslungen: %2.</translation>
    </message>
    <message>
        <source>The copy &quot;%1&quot; was not saved: %2. Nothing was left behind.</source>
        <translation>Die Kopie „%1“ wurde nicht gespeichert: %2. Davon ist nichts übrig.</translation>
    </message>
    <message>
        <source>Nothing was saved: there is no destination.</source>
        <translation>Es wurde nichts gespeichert: Es gibt kein Ziel.</translation>
    </message>
    <message>
        <source>The source goes on with the new file.</source>
        <translation>Die Quelle fährt mit der neuen Datei fort.</translation>
    </message>
    <message>
        <source>The destination goes on with the new file.</source>
        <translation>Das Ziel fährt mit der neuen Datei fort.</translation>
    </message>
    <message>
        <source>The source&apos;s new file cannot be opened: %1.</source>
        <extracomment>%1: why, a clause</extracomment>
        <translation>Die neue Datei der Quelle lässt sich nicht öffnen: %1.</translation>
    </message>
    <message>
        <source>The destination&apos;s new file cannot be opened: %1.</source>
        <translation>Die neue Datei des Ziels lässt sich nicht öffnen: %1.</translation>
    </message>
</context>
<context>
    <name>ScanMessages</name>
    <message>
        <source>Nothing was scanned. %1</source>
        <extracomment>%1: why, a sentence</extracomment>
        <translation>Es wurde nichts gescannt. %1</translation>
    </message>
    <message>
        <source>Nothing was scanned: %1.</source>
        <extracomment>%1: what the system says</extracomment>
        <translation>Es wurde nichts gescannt: %1.</translation>
    </message>
    <message>
        <source>Scanned &quot;%1&quot; and &quot;%2&quot; in %3.</source>
        <extracomment>%1 and %2: files. %3: a span of time</extracomment>
        <translation>„%1“ und „%2“ wurden in %3 gescannt.</translation>
    </message>
    <message>
        <source>The scan was cancelled. The timeline shows what was found until then.</source>
        <translation>Der Scan wurde abgebrochen. Die Zeitleiste zeigt, was bis dahin gefunden wurde.</translation>
    </message>
    <message>
        <source>The scan was cancelled before anything was found.</source>
        <translation>Der Scan wurde abgebrochen, bevor etwas gefunden war.</translation>
    </message>
    <message>
        <source>The source cannot be read from %1 on. %2</source>
        <extracomment>%1: a timecode. %2: why, a sentence</extracomment>
        <translation>Die Quelle lässt sich ab %1 nicht mehr lesen. %2</translation>
    </message>
    <message>
        <source>The destination cannot be read from %1 on. %2</source>
        <translation>Das Ziel lässt sich ab %1 nicht mehr lesen. %2</translation>
    </message>
    <message>
        <source>The scan was given up.</source>
        <translation>Der Scan wurde aufgegeben.</translation>
    </message>
    <message>
        <source>The destination&apos;s picture was not found in the source within 10 seconds.</source>
        <translation>Das Bild des Ziels wurde in der Quelle innerhalb von 10 Sekunden nicht gefunden.</translation>
    </message>
    <message>
        <source>The pictures do not move: where in the source this one is cannot be told.</source>
        <translation>Die Bilder bewegen sich nicht: Wo in der Quelle dieses ist, lässt sich nicht sagen.</translation>
    </message>
    <message>
        <source>The destination shows nothing of the source at %1. Only the destination went there.</source>
        <extracomment>%1: a timecode</extracomment>
        <translation>Das Ziel zeigt bei %1 nichts von der Quelle. Nur das Ziel steht jetzt dort.</translation>
    </message>
    <message>
        <source>The destination does not show what the source shows at %1.</source>
        <extracomment>%1: a timecode</extracomment>
        <translation>Was die Quelle bei %1 zeigt, kommt im Ziel nicht vor.</translation>
    </message>
    <message>
        <source>The scan has not been at %1. Only the destination went there.</source>
        <extracomment>%1: a timecode</extracomment>
        <translation>Bei %1 war der Scan noch nicht. Nur das Ziel steht jetzt dort.</translation>
    </message>
</context>
<context>
    <name>ScanWords</name>
    <message>
        <source>not measured: black, or of one colour</source>
        <translation>nicht gemessen: schwarz oder einfarbig</translation>
    </message>
    <message>
        <source>not measured: no calm tones between black and white</source>
        <translation>nicht gemessen: keine ruhigen Töne zwischen Schwarz und Weiß</translation>
    </message>
    <message>
        <source>%1 left</source>
        <extracomment>%1: minutes and seconds</extracomment>
        <translation>noch %1</translation>
    </message>
    <message>
        <source>Cancelling the scan…</source>
        <translation>Der Scan wird abgebrochen…</translation>
    </message>
    <message>
        <source>Scanning: looking for the place of the one movie in the other…</source>
        <translation>Scan: Die Stelle des einen Films im anderen wird gesucht…</translation>
    </message>
    <message>
        <source>Scanning: %1 %</source>
        <extracomment>%1: a percentage</extracomment>
        <translation>Scan: %1 %</translation>
    </message>
    <message>
        <source>%1 × real time</source>
        <extracomment>%1: how many times faster than it plays</extracomment>
        <translation>%1 × Echtzeit</translation>
    </message>
    <message>
        <source>exponent %1</source>
        <translation>Exponent %1</translation>
    </message>
    <message>
        <source>identical frames: %1</source>
        <extracomment>%1: a number of frames</extracomment>
        <translation>identische Bilder: %1</translation>
    </message>
    <message>
        <source>frames without a counterpart: %1</source>
        <extracomment>%1: a number of frames</extracomment>
        <translation>Bilder ohne Gegenstück: %1</translation>
    </message>
    <message>
        <source>The scan was cancelled before it was found how the one movie lies upon the other.</source>
        <translation>Der Scan wurde abgebrochen, bevor gefunden war, wie der eine Film auf dem anderen liegt.</translation>
    </message>
    <message>
        <source>The pictures do not move: the offset in time cannot be told; the shift can.</source>
        <translation>Die Bilder bewegen sich nicht: Der Versatz in der Zeit lässt sich nicht sagen, die Abweichung schon.</translation>
    </message>
    <message>
        <source>Scan, as far as it came: %1</source>
        <extracomment>%1: what was found, a sentence</extracomment>
        <translation>Scan, soweit er kam: %1</translation>
    </message>
    <message>
        <source>Scan: %1</source>
        <translation>Scan: %1</translation>
    </message>
    <message>
        <source>identical</source>
        <translation>identisch</translation>
    </message>
    <message>
        <source>the same</source>
        <translation>gleich</translation>
    </message>
    <message>
        <source>gamma shift, exponent %1</source>
        <translation>Gammaverschiebung, Exponent %1</translation>
    </message>
    <message>
        <source>range compressed</source>
        <translation>Wertebereich gestaucht</translation>
    </message>
    <message>
        <source>range expanded</source>
        <translation>Wertebereich gespreizt</translation>
    </message>
    <message>
        <source>brightness or contrast, darker</source>
        <translation>Helligkeit oder Kontrast, dunkler</translation>
    </message>
    <message>
        <source>brightness or contrast, lighter</source>
        <translation>Helligkeit oder Kontrast, heller</translation>
    </message>
    <message>
        <source>another tone</source>
        <translation>anderer Ton</translation>
    </message>
    <message>
        <source>wrong matrix</source>
        <translation>falsche Matrix</translation>
    </message>
    <message>
        <source>another picture</source>
        <translation>anderes Bild</translation>
    </message>
    <message>
        <source>too dark to tell</source>
        <translation>zu dunkel für ein Urteil</translation>
    </message>
    <message>
        <source>too little to tell from</source>
        <translation>zu wenig für ein Urteil</translation>
    </message>
    <message>
        <source>%1 (sure by %2 %)</source>
        <extracomment>%1: what was done to it. %2: a percentage</extracomment>
        <translation>%1 (zu %2 % sicher)</translation>
    </message>
    <message>
        <source>%1 – %2: %3</source>
        <extracomment>%1 and %2: timecodes. %3: what is there</extracomment>
        <translation>%1 – %2: %3</translation>
    </message>
    <message>
        <source>no counterpart in the source</source>
        <translation>kein Gegenstück in der Quelle</translation>
    </message>
    <message>
        <source>%1: not scanned</source>
        <translation>%1: nicht gescannt</translation>
    </message>
    <message>
        <source>%1: exponent %2</source>
        <translation>%1: Exponent %2</translation>
    </message>
    <message>
        <source>Worst frame: %1, exponent %2</source>
        <translation>Schlimmstes Bild: %1, Exponent %2</translation>
    </message>
</context>
<context>
    <name>SyncMessages</name>
    <message>
        <source>none</source>
        <translation>keine Angabe</translation>
    </message>
    <message>
        <source>%1 bytes</source>
        <extracomment>The size of a colour profile</extracomment>
        <translation>%1 Bytes</translation>
    </message>
    <message>
        <source>gamma %1 → %2</source>
        <extracomment>%1: before. %2: after</extracomment>
        <translation>Gamma %1 → %2</translation>
    </message>
    <message>
        <source>colour %1 → %2</source>
        <translation>Farbe %1 → %2</translation>
    </message>
    <message>
        <source>profile %1 → %2</source>
        <translation>Profil %1 → %2</translation>
    </message>
    <message>
        <source>Nothing was synced. %1</source>
        <extracomment>%1: why, a sentence</extracomment>
        <translation>Es wurde nichts abgeglichen. %1</translation>
    </message>
    <message>
        <source>There was nothing to change in &quot;%1&quot;.</source>
        <translation>An „%1“ war nichts zu ändern.</translation>
    </message>
    <message>
        <source>Changed &quot;%1&quot;, not saved yet: %2.</source>
        <extracomment>%1: a file. %2: what changed, as in &quot;gamma 1.80 → 2.20, colour none → 1-1-1&quot;</extracomment>
        <translation>„%1“ ist geändert, noch nicht gespeichert: %2.</translation>
    </message>
    <message>
        <source>The gamma (%1) stays, although the source has none.</source>
        <extracomment>%1: its value</extracomment>
        <translation>Das Gamma (%1) bleibt, obwohl die Quelle keines hat.</translation>
    </message>
    <message>
        <source>The colour (%1) stays, although the source has none.</source>
        <translation>Die Farbe (%1) bleibt, obwohl die Quelle keine hat.</translation>
    </message>
    <message>
        <source>The profile (%1) stays, although the source has none.</source>
        <translation>Das Profil (%1) bleibt, obwohl die Quelle keines hat.</translation>
    </message>
    <message>
        <source>Nothing was changed in &quot;%1&quot;: its gamma cannot be set (error %2).</source>
        <extracomment>%1: a file. %2: the number of an error</extracomment>
        <translation>An „%1“ wurde nichts geändert: Das Gamma lässt sich nicht setzen (Fehler %2).</translation>
    </message>
    <message>
        <source>Nothing was changed in &quot;%1&quot;: its colour cannot be set (error %2).</source>
        <translation>An „%1“ wurde nichts geändert: Die Farbe lässt sich nicht setzen (Fehler %2).</translation>
    </message>
    <message>
        <source>Nothing was changed in &quot;%1&quot;: its profile cannot be set (error %2).</source>
        <translation>An „%1“ wurde nichts geändert: Das Profil lässt sich nicht setzen (Fehler %2).</translation>
    </message>
</context>
<context>
    <name>TimelinePainting</name>
    <message>
        <source>no counterpart</source>
        <translation>kein Gegenstück</translation>
    </message>
    <message>
        <source>not measured</source>
        <translation>nicht gemessen</translation>
    </message>
</context>
<context>
    <name>TimelineView</name>
    <message>
        <source>Timeline of the scan</source>
        <translation>Zeitleiste des Scans</translation>
    </message>
    <message>
        <source>Above the line the destination is darker, below it lighter.</source>
        <translation>Über der Linie ist das Ziel dunkler, darunter heller.</translation>
    </message>
</context>
<context>
    <name>TransportBar</name>
    <message>
        <source>%1: one frame back</source>
        <translation>%1: ein Bild zurück</translation>
    </message>
    <message>
        <source>%1: play</source>
        <translation>%1: abspielen</translation>
    </message>
    <message>
        <source>%1: one frame forward</source>
        <translation>%1: ein Bild vor</translation>
    </message>
    <message>
        <source>%1: sound off</source>
        <translation>%1: Ton aus</translation>
    </message>
    <message>
        <source>%1: position</source>
        <translation>%1: Position</translation>
    </message>
    <message>
        <source>%1: volume</source>
        <translation>%1: Lautstärke</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>%1: pause</source>
        <translation>%1: Pause</translation>
    </message>
    <message>
        <source>%1: sound on</source>
        <translation>%1: Ton an</translation>
    </message>
</context>
<context>
    <name>VerdictWords</name>
    <message>
        <source>Comparing the two frames…</source>
        <translation>Die beiden Bilder werden verglichen…</translation>
    </message>
    <message>
        <source>No verdict yet. Go to the same picture in both movies, and press Check.</source>
        <extracomment>%1: why, a sentence</extracomment>
        <translation>Noch kein Urteil. Gehen Sie in beiden Filmen zum selben Bild, und klicken Sie auf „Prüfen“.</translation>
    </message>
    <message>
        <source>No verdict yet. %1</source>
        <translation>Noch kein Urteil. %1</translation>
    </message>
    <message>
        <source>Looking for the destination&apos;s picture in the source…</source>
        <translation>Das Bild des Ziels wird in der Quelle gesucht…</translation>
    </message>
    <message>
        <source>Out of date: the source is another movie.</source>
        <translation>Überholt: Die Quelle ist ein anderer Film.</translation>
    </message>
    <message>
        <source>Out of date: the destination is another movie.</source>
        <translation>Überholt: Das Ziel ist ein anderer Film.</translation>
    </message>
    <message>
        <source>Out of date: the source&apos;s metadata changed.</source>
        <translation>Überholt: Die Metadaten der Quelle haben sich geändert.</translation>
    </message>
    <message>
        <source>Out of date: the destination&apos;s metadata changed.</source>
        <translation>Überholt: Die Metadaten des Ziels haben sich geändert.</translation>
    </message>
    <message>
        <source>Out of date: the source&apos;s playhead moved.</source>
        <translation>Überholt: Der Abspielkopf der Quelle steht anderswo.</translation>
    </message>
    <message>
        <source>Out of date: the destination&apos;s playhead moved.</source>
        <translation>Überholt: Der Abspielkopf des Ziels steht anderswo.</translation>
    </message>
    <message>
        <source>The playheads are not at the same time.</source>
        <translation>Die Abspielköpfe stehen nicht auf derselben Zeit.</translation>
    </message>
    <message>
        <source>The destination has changes that are not saved.</source>
        <translation>Das Ziel hat Änderungen, die nicht gesichert sind.</translation>
    </message>
    <message>
        <source>Check Again</source>
        <translation>Erneut prüfen</translation>
    </message>
    <message>
        <source>Sync Metadata</source>
        <translation>Metadaten abgleichen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Find the Place</source>
        <translation>Stelle suchen</translation>
    </message>
    <message>
        <source>Same Time</source>
        <translation>Gleiche Zeit</translation>
    </message>
    <message>
        <source>Another Frame</source>
        <translation>Anderes Bild</translation>
    </message>
    <message>
        <source>Remedies…</source>
        <translation>Abhilfe…</translation>
    </message>
    <message>
        <source>Compares the two frames shown now</source>
        <translation>Vergleicht die beiden Bilder, die jetzt zu sehen sind</translation>
    </message>
    <message>
        <source>Copies the source&apos;s colour metadata onto the destination</source>
        <translation>Überträgt die Farbmetadaten der Quelle auf das Ziel (im Bericht: „Sync Metadata“)</translation>
    </message>
    <message>
        <source>Saves the destination&apos;s metadata in place</source>
        <translation>Speichert die Metadaten des Ziels in dessen Datei</translation>
    </message>
    <message>
        <source>Looks for the destination&apos;s picture in the source, up to 10 seconds away, and compares there</source>
        <translation>Sucht das Bild des Ziels in der Quelle, bis zu 10 Sekunden davor und danach, und vergleicht dort</translation>
    </message>
    <message>
        <source>Takes the destination&apos;s playhead to the source&apos;s time</source>
        <translation>Stellt den Abspielkopf des Ziels auf die Zeit der Quelle</translation>
    </message>
    <message>
        <source>Takes both playheads to another frame, and compares there</source>
        <translation>Stellt beide Abspielköpfe auf ein anderes Bild, und vergleicht dort</translation>
    </message>
    <message>
        <source>Opens the manual, which has a chapter on each finding and its remedy</source>
        <translation>Öffnet das Handbuch, in dem zu jedem Befund die Abhilfe steht</translation>
    </message>
</context>
<context>
    <name>WhyNot</name>
    <message>
        <source>There are no movies.</source>
        <translation>Es gibt keine Filme.</translation>
    </message>
    <message>
        <source>There is no source.</source>
        <translation>Es gibt keine Quelle.</translation>
    </message>
    <message>
        <source>There is no destination.</source>
        <translation>Es gibt kein Ziel.</translation>
    </message>
    <message>
        <source>The source has no pictures.</source>
        <translation>Die Quelle hat keine Bilder.</translation>
    </message>
    <message>
        <source>The destination has no pictures.</source>
        <translation>Das Ziel hat keine Bilder.</translation>
    </message>
    <message>
        <source>The destination has no unsaved changes.</source>
        <translation>Das Ziel hat keine ungespeicherten Änderungen.</translation>
    </message>
    <message>
        <source>The movies do not last equally long.</source>
        <translation>Die Filme sind nicht gleich lang.</translation>
    </message>
    <message>
        <source>There is no movie.</source>
        <translation>Es gibt keinen Film.</translation>
    </message>
</context>
<context>
    <name>WindowMessages</name>
    <message>
        <source>%1 – %2</source>
        <extracomment>A title. %1: the source&apos;s name. %2: the application</extracomment>
        <translation>%1 – %2</translation>
    </message>
    <message>
        <source>→ %1[*] – %2</source>
        <extracomment>A title. %1: the destination&apos;s name. %2: the application. [*] stays: the mark of unsaved changes stands there</extracomment>
        <translation>→ %1[*] – %2</translation>
    </message>
    <message>
        <source>%1 → %2[*] – %3</source>
        <extracomment>A title. %1: the source&apos;s name. %2: the destination&apos;s. %3: the application. [*] as above</extracomment>
        <translation>%1 → %2[*] – %3</translation>
    </message>
    <message>
        <source>%1 → %2</source>
        <extracomment>A pair of movies. %1: the source&apos;s name. %2: the destination&apos;s</extracomment>
        <translation>%1 → %2</translation>
    </message>
    <message>
        <source>Source: %1
Destination: %2</source>
        <extracomment>%1 and %2: paths</extracomment>
        <translation>Quelle: %1
Ziel: %2</translation>
    </message>
    <message>
        <source>Esc leaves full screen.</source>
        <translation>Esc beendet das Vollbild.</translation>
    </message>
    <message>
        <source>The user manual is not installed.</source>
        <translation>Das Benutzerhandbuch ist nicht installiert.</translation>
    </message>
    <message>
        <source>There is no program that opens %1.</source>
        <extracomment>%1: the address of a page, or a file</extracomment>
        <translation>Es gibt kein Programm, das %1 öffnet.</translation>
    </message>
    <message>
        <source>No updater is installed that could look for a newer version.</source>
        <translation>Es ist kein Programm installiert, das nach einer neueren Version suchen könnte.</translation>
    </message>
    <message>
        <source>The gathering of logs was cancelled.</source>
        <translation>Das Sammeln der Protokolle wurde abgebrochen.</translation>
    </message>
    <message>
        <source>The logs were not gathered.</source>
        <translation>Die Protokolle wurden nicht gesammelt.</translation>
    </message>
    <message>
        <source>The log was not opened.</source>
        <translation>Das Protokoll wurde nicht geöffnet.</translation>
    </message>
    <message>
        <source>The settings cannot be written, and stay as they were.</source>
        <translation>Die Einstellungen lassen sich nicht schreiben und bleiben, wie sie waren.</translation>
    </message>
    <message>
        <source>There is no movie there to go to a timecode.</source>
        <translation>Dort gibt es keinen Film, der zu einem Timecode gehen könnte.</translation>
    </message>
    <message>
        <source>The movie does not reach to %1. This is where it begins or ends.</source>
        <translation>Der Film reicht nicht bis %1. Hier beginnt oder endet er.</translation>
    </message>
</context>
</TS>
