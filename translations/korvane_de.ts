<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>korvane</name>
    <message>
        <source>Undo</source>
        <translation>Widerrufen</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>New Group</source>
        <translation>Neue Gruppe</translation>
    </message>
    <message>
        <source>File operation error...
 error: %1
 with file: %2</source>
        <translation>Fehler bei einer Dateioperation …
 Fehler: %1
 bei der Datei: %2</translation>
    </message>
    <message>
        <source>Proceed</source>
        <translation>Fortfahren</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>About Korvane</source>
        <translation>Über Korvane</translation>
    </message>
    <message>
        <source>About text</source>
        <translation>Info-Text</translation>
    </message>
    <message>
        <source>Groups</source>
        <translation>Gruppen</translation>
    </message>
    <message>
        <source>Group names</source>
        <translation>Gruppennamen</translation>
    </message>
    <message>
        <source>Group</source>
        <translation>Gruppe</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Add a group</source>
        <translation>Gruppe hinzufügen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Delete the selected group</source>
        <translation>Ausgewählte Gruppe löschen</translation>
    </message>
    <message>
        <source>Plug-In Info</source>
        <translation>Plug-In-Info</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message>
        <source>Info</source>
        <translation>Info</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>Version:</source>
        <translation>Version:</translation>
    </message>
    <message>
        <source>Info:</source>
        <translation>Info:</translation>
    </message>
    <message>
        <source>Companion folders</source>
        <translation>Begleitordner</translation>
    </message>
    <message>
        <source>Add...</source>
        <translation>Hinzufügen …</translation>
    </message>
    <message>
        <source>Add a companion folder</source>
        <translation>Begleitordner hinzufügen</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the selected companion folder</source>
        <translation>Ausgewählten Begleitordner entfernen</translation>
    </message>
    <message>
        <source>Launch Script</source>
        <translation>Startskript</translation>
    </message>
    <message>
        <source>Apply the selected set of:</source>
        <translation>Das ausgewählte Set anwenden für:</translation>
    </message>
    <message>
        <source>Script</source>
        <translation>Skript</translation>
    </message>
    <message>
        <source>Then run:</source>
        <translation>Danach starten:</translation>
    </message>
    <message>
        <source>Host command line</source>
        <translation>Befehlszeile des Hosts</translation>
    </message>
    <message>
        <source>e.g. ardour8 &quot;My Session&quot;</source>
        <translation>z. B. ardour8 &quot;Meine Session&quot;</translation>
    </message>
    <message>
        <source>Save...</source>
        <translation>Speichern …</translation>
    </message>
    <message>
        <source>Save the script</source>
        <translation>Skript speichern</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Log text</source>
        <translation>Protokolltext</translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Preference pages</source>
        <translation>Einstellungsseiten</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Check for updates at start-up</source>
        <translation>Beim Start nach Updates suchen</translation>
    </message>
    <message>
        <source>Default set:</source>
        <translation>Standard-Set:</translation>
    </message>
    <message>
        <source>Default set</source>
        <translation>Standard-Set</translation>
    </message>
    <message>
        <source>Choose...</source>
        <translation>Auswählen …</translation>
    </message>
    <message>
        <source>Choose the default set</source>
        <translation>Standard-Set auswählen</translation>
    </message>
    <message>
        <source>Apply a set as soon as it is opened</source>
        <translation>Ein Set gleich beim Öffnen anwenden</translation>
    </message>
    <message>
        <source>Use these plug-ins (a tab in the main window)</source>
        <translation>Diese Plug-Ins verwenden (ein Tab im Hauptfenster)</translation>
    </message>
    <message>
        <source>Show the companion folders in the info panel</source>
        <translation>Begleitordner im Info-Fenster anzeigen</translation>
    </message>
    <message>
        <source>Move the companion folders with their plug-ins</source>
        <translation>Begleitordner mit ihren Plug-Ins verschieben</translation>
    </message>
    <message>
        <source>Scan subfolders</source>
        <translation>Unterordner durchsuchen</translation>
    </message>
    <message>
        <source>setGlobal</source>
        <translation>Systemweit</translation>
    </message>
    <message>
        <source>setLocal</source>
        <translation>Nur für diesen Benutzer</translation>
    </message>
    <message>
        <source>%1 &quot;%2&quot;</source>
        <translation>%1 „%2“</translation>
    </message>
    <message>
        <source>%1 for &quot;%2&quot;</source>
        <translation>%1 für „%2“</translation>
    </message>
    <message>
        <source>----- Plug-In Info -----
</source>
        <translation>----- Plug-In-Info -----
</translation>
    </message>
    <message>
        <source>Type: %s
</source>
        <translation>Typ: %s
</translation>
    </message>
    <message>
        <source>Plug-ins not moved</source>
        <translation>Plug-Ins nicht verschoben</translation>
    </message>
    <message>
        <source>The plug-in library could not be locked: %1.</source>
        <translation>Die Plug-In-Bibliothek konnte nicht gesperrt werden: %1.</translation>
    </message>
    <message>
        <source>%1 is moving plug-ins. Try again when it has finished.</source>
        <translation>%1 verschiebt gerade Plug-Ins. Versuchen Sie es erneut, wenn der Vorgang abgeschlossen ist.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>Moving plug-ins:</source>
        <translation>Plug-Ins werden verschoben:</translation>
    </message>
    <message>
        <source>Not moved: the apply was stopped</source>
        <translation>Nicht verschoben: Das Anwenden wurde angehalten</translation>
    </message>
    <message>
        <source>Stopped, not moved: %1
</source>
        <translation>Angehalten, nicht verschoben: %1
</translation>
    </message>
    <message>
        <source>No plug-in matches the pending change</source>
        <translation>Kein Plug-In passt zur ausstehenden Änderung</translation>
    </message>
    <message>
        <source>%1 stays in %2: another installed copy lies at %3
</source>
        <translation>%1 bleibt in %2: Unter %3 liegt eine andere installierte Kopie
</translation>
    </message>
    <message>
        <source>Another installed copy of the plug-in lies there; both copies are kept</source>
        <translation>Dort liegt eine andere installierte Kopie des Plug-Ins; beide Kopien bleiben erhalten</translation>
    </message>
    <message>
        <source>%1 was in the way and is now in the trash: %2
</source>
        <translation>%1 war im Weg und liegt jetzt im Papierkorb: %2
</translation>
    </message>
    <message>
        <source>%1 %2 for &quot;%3&quot;</source>
        <translation>%1 %2 für „%3“</translation>
    </message>
    <message>
        <source>setGroup</source>
        <translation>Gruppe</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>----- %1 -----
</source>
        <translation>----- %1 -----
</translation>
    </message>
    <message>
        <source>Plugin %1 is found %2 times
</source>
        <translation>Plug-In %1 wurde %2-mal gefunden
</translation>
    </message>
    <message>
        <source>Selected Set not found</source>
        <translation>Ausgewähltes Set nicht gefunden</translation>
    </message>
    <message>
        <source>try again</source>
        <translation>Erneut versuchen</translation>
    </message>
    <message>
        <source>remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>The set &quot;%1&quot; not longer exist.</source>
        <translation>Das Set „%1“ existiert nicht mehr.</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Install Files</source>
        <translation>Dateien installieren</translation>
    </message>
    <message>
        <source>All Files</source>
        <translation>Alle Dateien</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Stopped, not installed: %1
</source>
        <translation>Angehalten, nicht installiert: %1
</translation>
    </message>
    <message>
        <source>Could not read %1; kept it as %2</source>
        <translation>%1 konnte nicht gelesen werden und wurde als %2 aufbewahrt</translation>
    </message>
    <message>
        <source>Could not read %1 nor move it aside; left it as it is</source>
        <translation>%1 konnte weder gelesen noch beiseitegelegt werden und bleibt, wie es ist</translation>
    </message>
    <message>
        <source>enable</source>
        <translation>Einschalten</translation>
    </message>
    <message>
        <source>disable</source>
        <translation>Ausschalten</translation>
    </message>
    <message>
        <source>setActive</source>
        <translation>Einschalten</translation>
    </message>
    <message>
        <source>setInactive</source>
        <translation>Ausschalten</translation>
    </message>
    <message>
        <source>scan AudioUnits:</source>
        <translation>AudioUnits durchsuchen:</translation>
    </message>
    <message>
        <source>scan RTAS-Plugins:</source>
        <translation>RTAS-Plug-Ins durchsuchen:</translation>
    </message>
    <message>
        <source>scan MAS-Plugins:</source>
        <translation>MAS-Plug-Ins durchsuchen:</translation>
    </message>
    <message>
        <source>scan VST-Plugins:</source>
        <translation>VST-Plug-Ins durchsuchen:</translation>
    </message>
    <message>
        <source>scan for AudioUnits:</source>
        <translation>Suche nach AudioUnits:</translation>
    </message>
    <message>
        <source>scan for RTAS-Plugins:</source>
        <translation>Suche nach RTAS-Plug-Ins:</translation>
    </message>
    <message>
        <source>scan for MAS-Plugins:</source>
        <translation>Suche nach MAS-Plug-Ins:</translation>
    </message>
    <message>
        <source>scan for VST-Plugins:</source>
        <translation>Suche nach VST-Plug-Ins:</translation>
    </message>
    <message>
        <source>AudioUnits only</source>
        <translation>Nur AudioUnits</translation>
    </message>
    <message>
        <source>RTAS-PlugIns only</source>
        <translation>Nur RTAS-Plug-Ins</translation>
    </message>
    <message>
        <source>MAS-PlugIns only</source>
        <translation>Nur MAS-Plug-Ins</translation>
    </message>
    <message>
        <source>VST-PlugIns only</source>
        <translation>Nur VST-Plug-Ins</translation>
    </message>
    <message>
        <source>Install AudioUnits only?</source>
        <translation>Nur AudioUnits installieren?</translation>
    </message>
    <message>
        <source>Install RTAS-PlugIns only?</source>
        <translation>Nur RTAS-Plug-Ins installieren?</translation>
    </message>
    <message>
        <source>Install MAS-PlugIns only?</source>
        <translation>Nur MAS-Plug-Ins installieren?</translation>
    </message>
    <message>
        <source>Install VST-PlugIns only?</source>
        <translation>Nur VST-Plug-Ins installieren?</translation>
    </message>
    <message>
        <source>install AudioUnits:</source>
        <translation>AudioUnits installieren:</translation>
    </message>
    <message>
        <source>install RTAS-PlugIns:</source>
        <translation>RTAS-Plug-Ins installieren:</translation>
    </message>
    <message>
        <source>install MAS-PlugIns:</source>
        <translation>MAS-Plug-Ins installieren:</translation>
    </message>
    <message>
        <source>install VST-PlugIns:</source>
        <translation>VST-Plug-Ins installieren:</translation>
    </message>
    <message>
        <source>AudioUnits Plug-In Info</source>
        <translation>AudioUnits-Plug-In-Info</translation>
    </message>
    <message>
        <source>RTAS Plug-Ins Info</source>
        <translation>RTAS-Plug-In-Info</translation>
    </message>
    <message>
        <source>MAS Plug-Ins Info</source>
        <translation>MAS-Plug-In-Info</translation>
    </message>
    <message>
        <source>VST Plug-Ins Info</source>
        <translation>VST-Plug-In-Info</translation>
    </message>
    <message>
        <source>Please select a AudioUnit Plug-In</source>
        <translation>Bitte wählen Sie ein AudioUnit-Plug-In aus</translation>
    </message>
    <message>
        <source>Please select a RTAS Plug-In</source>
        <translation>Bitte wählen Sie ein RTAS-Plug-In aus</translation>
    </message>
    <message>
        <source>Please select a MAS Plug-In</source>
        <translation>Bitte wählen Sie ein MAS-Plug-In aus</translation>
    </message>
    <message>
        <source>Please select a VST Plug-In</source>
        <translation>Bitte wählen Sie ein VST-Plug-In aus</translation>
    </message>
    <message>
        <source>There is no set selected for AudioUnits</source>
        <translation>Für AudioUnits ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>There is no set selected for RTAS</source>
        <translation>Für RTAS ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>There is no set selected for MAS</source>
        <translation>Für MAS ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>There is no set selected for VST</source>
        <translation>Für VST ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>There is no trash: the home folder does not exist</source>
        <translation>Kein Papierkorb: Der Benutzerordner existiert nicht</translation>
    </message>
    <message>
        <source>The trash holds too many items of this name</source>
        <translation>Im Papierkorb liegen zu viele Objekte dieses Namens</translation>
    </message>
    <message>
        <source>read-only</source>
        <translation>schreibgeschützt</translation>
    </message>
    <message>
        <source>Scrip Generation</source>
        <translation>Skripterstellung</translation>
    </message>
    <message>
        <source>Move to trash</source>
        <translation>In den Papierkorb legen</translation>
    </message>
    <message>
        <source>Do you want to move the selected Plug-Ins to trash?</source>
        <translation>Möchten Sie die ausgewählten Plug-Ins in den Papierkorb legen?</translation>
    </message>
    <message>
        <source>cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>move to trash</source>
        <translation>In den Papierkorb legen</translation>
    </message>
    <message>
        <source>Update check</source>
        <translation>Suche nach Updates</translation>
    </message>
    <message>
        <source>Could not connect to the internet</source>
        <translation>Keine Verbindung zum Internet möglich</translation>
    </message>
    <message>
        <source>Your Software is up-to-date</source>
        <translation>Ihre Software ist auf dem neuesten Stand</translation>
    </message>
    <message>
        <source>You have the most recent version of &quot;Korvane&quot;.</source>
        <translation>Sie haben die neueste Version von „Korvane“.</translation>
    </message>
    <message>
        <source>A New Version is Available</source>
        <translation>Eine neue Version ist verfügbar</translation>
    </message>
    <message>
        <source>A new version of &quot;Korvane&quot; is available (version %1). Would you like to download the new version now?</source>
        <translation>Eine neue Version von „Korvane“ ist verfügbar (Version %1). Möchten Sie die neue Version jetzt laden?</translation>
    </message>
    <message>
        <source>Missing Plug-Ins</source>
        <translation>Fehlende Plug-Ins</translation>
    </message>
    <message>
        <source>These plug-ins of the set are not installed:</source>
        <translation>Diese Plug-Ins des Sets sind nicht installiert:</translation>
    </message>
    <message>
        <source>Missing plug-ins</source>
        <translation>Fehlende Plug-Ins</translation>
    </message>
    <message>
        <source>Remove saves the set without them.</source>
        <translation>„Entfernen“ speichert das Set ohne sie.</translation>
    </message>
    <message>
        <source>Ignore</source>
        <translation>Ignorieren</translation>
    </message>
    <message>
        <source>Current item</source>
        <translation>Aktuelles Objekt</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Details</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Stopping...</source>
        <translation>Wird angehalten …</translation>
    </message>
    <message>
        <source>Documents (%1)</source>
        <translation>Dokumente (%1)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>&quot;%1&quot; already exists. Do you want to replace it?</source>
        <translation>„%1“ ist bereits vorhanden. Möchten Sie es ersetzen?</translation>
    </message>
    <message>
        <source>Replace</source>
        <translation>Ersetzen</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>on</source>
        <translation>ein</translation>
    </message>
    <message>
        <source>off</source>
        <translation>aus</translation>
    </message>
    <message>
        <source>Plug-ins of %1</source>
        <translation>Plug-Ins von %1</translation>
    </message>
    <message>
        <source>Columns of %1</source>
        <translation>Spalten von %1</translation>
    </message>
    <message>
        <source>Active</source>
        <translation>Aktiv</translation>
    </message>
    <message>
        <source>Global</source>
        <translation>Systemweit</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Set</source>
        <translation>Set</translation>
    </message>
    <message>
        <source>Set name</source>
        <translation>Set-Name</translation>
    </message>
    <message>
        <source>New</source>
        <translation>Neu</translation>
    </message>
    <message>
        <source>Save As</source>
        <translation>Speichern unter</translation>
    </message>
    <message>
        <source>&amp;Apply</source>
        <translation>&amp;Anwenden</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Plug-Ins</source>
        <translation>Plug-Ins</translation>
    </message>
    <message>
        <source>Set:</source>
        <translation>Gewähltes Set:</translation>
    </message>
    <message>
        <source>Plug-in formats</source>
        <translation>Plug-In-Formate</translation>
    </message>
    <message>
        <source>Menu bar</source>
        <translation>Menüleiste</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>Open...</source>
        <translation>Öffnen …</translation>
    </message>
    <message>
        <source>Save As...</source>
        <translation>Speichern unter …</translation>
    </message>
    <message>
        <source>Launch Script...</source>
        <translation>Startskript …</translation>
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
        <source>Delete...</source>
        <translation>Löschen …</translation>
    </message>
    <message>
        <source>Find</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>&amp;Plug-Ins</source>
        <translation>&amp;Plug-Ins</translation>
    </message>
    <message>
        <source>All On</source>
        <translation>Alle ein</translation>
    </message>
    <message>
        <source>All Off</source>
        <translation>Alle aus</translation>
    </message>
    <message>
        <source>Group On</source>
        <translation>Gruppe ein</translation>
    </message>
    <message>
        <source>Group Off</source>
        <translation>Gruppe aus</translation>
    </message>
    <message>
        <source>Selected On</source>
        <translation>Ausgewählte ein</translation>
    </message>
    <message>
        <source>Selected Off</source>
        <translation>Ausgewählte aus</translation>
    </message>
    <message>
        <source>Set Group</source>
        <translation>Gruppe zuweisen</translation>
    </message>
    <message>
        <source>PowerPC On</source>
        <translation>PowerPC ein</translation>
    </message>
    <message>
        <source>PowerPC Off</source>
        <translation>PowerPC aus</translation>
    </message>
    <message>
        <source>Intel On</source>
        <translation>Intel ein</translation>
    </message>
    <message>
        <source>Intel Off</source>
        <translation>Intel aus</translation>
    </message>
    <message>
        <source>Universal On</source>
        <translation>Universal ein</translation>
    </message>
    <message>
        <source>Universal Off</source>
        <translation>Universal aus</translation>
    </message>
    <message>
        <source>Rescan</source>
        <translation>Neu einlesen</translation>
    </message>
    <message>
        <source>Duplicates</source>
        <translation>Duplikate</translation>
    </message>
    <message>
        <source>Backup</source>
        <translation>Sicherung</translation>
    </message>
    <message>
        <source>Restore Backup</source>
        <translation>Sicherung wiederherstellen</translation>
    </message>
    <message>
        <source>Examine Audio Unit Alone</source>
        <translation>Audio Unit einzeln prüfen</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>Show Log</source>
        <translation>Protokoll zeigen</translation>
    </message>
    <message>
        <source>Hide Log</source>
        <translation>Protokoll ausblenden</translation>
    </message>
    <message>
        <source>&amp;Preferences</source>
        <translation>&amp;Einstellungen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Check for Update</source>
        <translation>Nach Update suchen</translation>
    </message>
    <message>
        <source>none</source>
        <translation>keine</translation>
    </message>
    <message>
        <source>%1 was already at %2; the identical copy from %3 is now in the trash: %4
</source>
        <translation>%1 lag bereits in %2; die gleiche Kopie aus %3 liegt jetzt im Papierkorb: %4
</translation>
    </message>
    <message>
        <source>Finished an interrupted move: %1 is whole, its old copy %2 is removed</source>
        <translation>Unterbrochenes Verschieben abgeschlossen: %1 ist vollständig, die alte Kopie %2 wurde entfernt</translation>
    </message>
    <message>
        <source>Kept %1, the old copy of %2: %3</source>
        <translation>%1, die alte Kopie von %2, wurde behalten: %3</translation>
    </message>
    <message>
        <source>Kept %1, the hidden copy of an interrupted move: %2 holds a different item</source>
        <translation>%1, die verborgene Kopie eines unterbrochenen Verschiebens, wurde behalten: an %2 liegt ein anderes Objekt</translation>
    </message>
    <message>
        <source>Undid an interrupted move: %1 is back in place</source>
        <translation>Unterbrochenes Verschieben rückgängig gemacht: %1 ist wieder an seinem Platz</translation>
    </message>
    <message>
        <source>Kept %1, the hidden copy of an interrupted move: %2</source>
        <translation>%1, die verborgene Kopie eines unterbrochenen Verschiebens, wurde behalten: %2</translation>
    </message>
    <message>
        <source>Kept %1, the partial copy of an interrupted move: no other copy of %2 was found</source>
        <translation>%1, die Teilkopie eines unterbrochenen Verschiebens, wurde behalten: keine andere Kopie von %2 gefunden</translation>
    </message>
    <message>
        <source>Removed %1, the partial copy of an interrupted move</source>
        <translation>%1, die Teilkopie eines unterbrochenen Verschiebens, wurde entfernt</translation>
    </message>
    <message>
        <source>Kept %1, the partial copy of an interrupted move: %2</source>
        <translation>%1, die Teilkopie eines unterbrochenen Verschiebens, wurde behalten: %2</translation>
    </message>
    <message>
        <source>Moved %1, the Finder information of %2, beside it after an interrupted move</source>
        <translation>%1, die Finder-Informationen von %2, nach einem unterbrochenen Verschieben daneben gelegt</translation>
    </message>
    <message>
        <source>Kept %1, the Finder information of %2: %3</source>
        <translation>%1, die Finder-Informationen von %2, wurden behalten: %3</translation>
    </message>
    <message>
        <source>A folder on the way is a link; nothing moves through it</source>
        <translation>Ein Ordner auf dem Weg ist ein Verweis; durch ihn wird nichts bewegt</translation>
    </message>
    <message>
        <source>The source and the target are one and the same; nothing was moved</source>
        <translation>Quelle und Ziel sind ein und dasselbe; nichts wurde bewegt</translation>
    </message>
    <message>
        <source>%1 stays in %2: %3 is the same place</source>
        <translation>%1 bleibt in %2: %3 ist derselbe Ort</translation>
    </message>
    <message>
        <source>%1 stays in %2: %3 on the way is a link or no folder</source>
        <translation>%1 bleibt in %2: %3 auf dem Weg ist ein Verweis oder kein Ordner</translation>
    </message>
    <message>
        <source>%1 was in the way of the Finder information of %2 and is now in the trash: %3
</source>
        <translation>%1 war den Finder-Informationen von %2 im Weg und liegt jetzt im Papierkorb: %3
</translation>
    </message>
    <message>
        <source>The companion %1 of %2 stays where it is: %3 on the way is a link or no folder</source>
        <translation>Die Begleitdatei %1 von %2 bleibt, wo sie ist: %3 auf dem Weg ist ein Verweis oder kein Ordner</translation>
    </message>
    <message>
        <source>%1 and %2 are one folder: its plug-ins are listed once, in %1, and none can move from one to the other</source>
        <translation>%1 und %2 sind ein und derselbe Ordner: Seine Plug-Ins werden einmal aufgeführt, in %1, und keines kann von einem in den anderen bewegt werden</translation>
    </message>
    <message>
        <source>The host command line ends in a backslash</source>
        <translation>Die Befehlszeile des Hosts endet mit einem Backslash</translation>
    </message>
    <message>
        <source>The host command line has an unclosed single quote (&apos;)</source>
        <translation>Die Befehlszeile des Hosts hat ein nicht geschlossenes einfaches Anführungszeichen (&apos;)</translation>
    </message>
    <message>
        <source>The host command line has an unclosed double quote (&quot;)</source>
        <translation>Die Befehlszeile des Hosts hat ein nicht geschlossenes doppeltes Anführungszeichen (&quot;)</translation>
    </message>
    <message>
        <source>Script not saved</source>
        <translation>Skript nicht gespeichert</translation>
    </message>
    <message>
        <source>%1 is now in the trash: %2</source>
        <translation>%1 liegt jetzt im Papierkorb: %2</translation>
    </message>
    <message>
        <source>%1 could not go to the trash: %2</source>
        <translation>%1 konnte nicht in den Papierkorb: %2</translation>
    </message>
    <message>
        <source>The source and the target are the same item</source>
        <translation>Quelle und Ziel sind dasselbe Objekt</translation>
    </message>
    <message>
        <source>%1 of %2 plug-ins in the system folders could not be moved.</source>
        <translation>%1 von %2 Plug-Ins in den Systemordnern konnten nicht verschoben werden.</translation>
    </message>
    <message>
        <source>Administrator rights are needed to change plug-ins in the system folders. They were not given; nothing was moved.</source>
        <translation>Um Plug-Ins in den Systemordnern zu ändern, sind Administratorrechte nötig. Sie wurden nicht erteilt; nichts wurde verschoben.</translation>
    </message>
    <message>
        <source>Administrator rights are needed to change plug-ins in the system folders, but nobody could be asked for them: %1</source>
        <translation>Um Plug-Ins in den Systemordnern zu ändern, sind Administratorrechte nötig, aber niemand konnte danach gefragt werden: %1</translation>
    </message>
    <message>
        <source>Administrator rights are needed to change plug-ins in the system folders, and this system cannot ask for them: pkexec (polkit) is not installed.</source>
        <translation>Um Plug-Ins in den Systemordnern zu ändern, sind Administratorrechte nötig, und dieses System kann nicht danach fragen: pkexec (polkit) ist nicht installiert.</translation>
    </message>
    <message>
        <source>Administrator rights are needed to change plug-ins in the system folders, but Korvane&apos;s helper program is missing: %1</source>
        <translation>Um Plug-Ins in den Systemordnern zu ändern, sind Administratorrechte nötig, aber das Hilfsprogramm von Korvane fehlt: %1</translation>
    </message>
    <message>
        <source>Korvane&apos;s helper refused to move plug-ins in the system folders, and nothing was moved: %1</source>
        <translation>Das Hilfsprogramm von Korvane hat es abgelehnt, Plug-Ins in den Systemordnern zu verschieben; nichts wurde verschoben: %1</translation>
    </message>
    <message>
        <source>Korvane&apos;s helper gave no answer that could be read: %1. Rescan to see where the plug-ins are.</source>
        <translation>Das Hilfsprogramm von Korvane gab keine lesbare Antwort: %1. Lesen Sie neu ein („Neu einlesen“), um zu sehen, wo die Plug-Ins liegen.</translation>
    </message>
    <message>
        <source>scan LV2-Plugins:</source>
        <translation>LV2-Plug-Ins durchsuchen:</translation>
    </message>
    <message>
        <source>scan for LV2-Plugins:</source>
        <translation>Suche nach LV2-Plug-Ins:</translation>
    </message>
    <message>
        <source>LV2-Plugins only</source>
        <translation>Nur LV2-Plug-Ins</translation>
    </message>
    <message>
        <source>Install LV2-Plugins only?</source>
        <translation>Nur LV2-Plug-Ins installieren?</translation>
    </message>
    <message>
        <source>install LV2-Plugins:</source>
        <translation>LV2-Plug-Ins installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for LV2</source>
        <translation>Für LV2 ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>scan VST3-Plugins:</source>
        <translation>VST3-Plug-Ins durchsuchen:</translation>
    </message>
    <message>
        <source>scan for VST3-Plugins:</source>
        <translation>Suche nach VST3-Plug-Ins:</translation>
    </message>
    <message>
        <source>VST3-Plugins only</source>
        <translation>Nur VST3-Plug-Ins</translation>
    </message>
    <message>
        <source>Install VST3-Plugins only?</source>
        <translation>Nur VST3-Plug-Ins installieren?</translation>
    </message>
    <message>
        <source>install VST3-Plugins:</source>
        <translation>VST3-Plug-Ins installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for VST3</source>
        <translation>Für VST3 ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>scan CLAP-Plugins:</source>
        <translation>CLAP-Plug-Ins durchsuchen:</translation>
    </message>
    <message>
        <source>scan for CLAP-Plugins:</source>
        <translation>Suche nach CLAP-Plug-Ins:</translation>
    </message>
    <message>
        <source>CLAP-Plugins only</source>
        <translation>Nur CLAP-Plug-Ins</translation>
    </message>
    <message>
        <source>Install CLAP-Plugins only?</source>
        <translation>Nur CLAP-Plug-Ins installieren?</translation>
    </message>
    <message>
        <source>install CLAP-Plugins:</source>
        <translation>CLAP-Plug-Ins installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for CLAP</source>
        <translation>Für CLAP ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>scan LADSPA-Plugins:</source>
        <translation>LADSPA-Plug-Ins durchsuchen:</translation>
    </message>
    <message>
        <source>scan for LADSPA-Plugins:</source>
        <translation>Suche nach LADSPA-Plug-Ins:</translation>
    </message>
    <message>
        <source>LADSPA-Plugins only</source>
        <translation>Nur LADSPA-Plug-Ins</translation>
    </message>
    <message>
        <source>Install LADSPA-Plugins only?</source>
        <translation>Nur LADSPA-Plug-Ins installieren?</translation>
    </message>
    <message>
        <source>install LADSPA-Plugins:</source>
        <translation>LADSPA-Plug-Ins installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for LADSPA</source>
        <translation>Für LADSPA ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>scan DSSI-Plugins:</source>
        <translation>DSSI-Plug-Ins durchsuchen:</translation>
    </message>
    <message>
        <source>scan for DSSI-Plugins:</source>
        <translation>Suche nach DSSI-Plug-Ins:</translation>
    </message>
    <message>
        <source>DSSI-Plugins only</source>
        <translation>Nur DSSI-Plug-Ins</translation>
    </message>
    <message>
        <source>Install DSSI-Plugins only?</source>
        <translation>Nur DSSI-Plug-Ins installieren?</translation>
    </message>
    <message>
        <source>install DSSI-Plugins:</source>
        <translation>DSSI-Plug-Ins installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for DSSI</source>
        <translation>Für DSSI ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>scan Linux-VST-Plugins:</source>
        <translation>Linux-VST-Plug-Ins durchsuchen:</translation>
    </message>
    <message>
        <source>scan for Linux-VST-Plugins:</source>
        <translation>Suche nach Linux-VST-Plug-Ins:</translation>
    </message>
    <message>
        <source>Linux-VST-Plugins only</source>
        <translation>Nur Linux-VST-Plug-Ins</translation>
    </message>
    <message>
        <source>Install Linux-VST-Plugins only?</source>
        <translation>Nur Linux-VST-Plug-Ins installieren?</translation>
    </message>
    <message>
        <source>install Linux-VST-Plugins:</source>
        <translation>Linux-VST-Plug-Ins installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for Linux VST</source>
        <translation>Für Linux VST ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>scan VST3 (macOS):</source>
        <translation>VST3 (macOS) durchsuchen:</translation>
    </message>
    <message>
        <source>scan for VST3 (macOS):</source>
        <translation>Suche nach VST3 (macOS):</translation>
    </message>
    <message>
        <source>VST3 (macOS) only</source>
        <translation>Nur VST3 (macOS)</translation>
    </message>
    <message>
        <source>Install VST3 (macOS) only?</source>
        <translation>Nur VST3 (macOS) installieren?</translation>
    </message>
    <message>
        <source>install VST3 (macOS):</source>
        <translation>VST3 (macOS) installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for VST3 (macOS)</source>
        <translation>Für VST3 (macOS) ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>scan CLAP (macOS):</source>
        <translation>CLAP (macOS) durchsuchen:</translation>
    </message>
    <message>
        <source>scan for CLAP (macOS):</source>
        <translation>Suche nach CLAP (macOS):</translation>
    </message>
    <message>
        <source>CLAP (macOS) only</source>
        <translation>Nur CLAP (macOS)</translation>
    </message>
    <message>
        <source>Install CLAP (macOS) only?</source>
        <translation>Nur CLAP (macOS) installieren?</translation>
    </message>
    <message>
        <source>install CLAP (macOS):</source>
        <translation>CLAP (macOS) installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for CLAP (macOS)</source>
        <translation>Für CLAP (macOS) ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>scan LV2 (macOS):</source>
        <translation>LV2 (macOS) durchsuchen:</translation>
    </message>
    <message>
        <source>scan for LV2 (macOS):</source>
        <translation>Suche nach LV2 (macOS):</translation>
    </message>
    <message>
        <source>LV2 (macOS) only</source>
        <translation>Nur LV2 (macOS)</translation>
    </message>
    <message>
        <source>Install LV2 (macOS) only?</source>
        <translation>Nur LV2 (macOS) installieren?</translation>
    </message>
    <message>
        <source>install LV2 (macOS):</source>
        <translation>LV2 (macOS) installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for LV2 (macOS)</source>
        <translation>Für LV2 (macOS) ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>scan AAX:</source>
        <translation>AAX durchsuchen:</translation>
    </message>
    <message>
        <source>scan for AAX:</source>
        <translation>Suche nach AAX:</translation>
    </message>
    <message>
        <source>AAX only</source>
        <translation>Nur AAX</translation>
    </message>
    <message>
        <source>Install AAX only?</source>
        <translation>Nur AAX installieren?</translation>
    </message>
    <message>
        <source>install AAX:</source>
        <translation>AAX installieren:</translation>
    </message>
    <message>
        <source>There is no set selected for AAX</source>
        <translation>Für AAX ist kein Set ausgewählt</translation>
    </message>
    <message>
        <source>the host&apos;s plug-in folders</source>
        <translation>die Plug-In-Ordner des Hosts</translation>
    </message>
    <message>
        <source>%1 stays in %2: the distribution owns that folder, and Korvane changes nothing there. To hide it, remove the package that installed it, or set %3 to the folders the host should search</source>
        <translation>%1 bleibt in %2: Der Ordner gehört der Distribution, und Korvane ändert dort nichts. Um es auszublenden, entfernen Sie das Paket, das es installiert hat, oder setzen Sie %3 auf die Ordner, die der Host durchsuchen soll</translation>
    </message>
    <message>
        <source>%1 stays in %2: it belongs to the package %3, and Korvane changes nothing the distribution owns. To hide it, remove the package %3, or set %4 to the folders the host should search</source>
        <translation>%1 bleibt in %2: Es gehört zum Paket %3, und Korvane ändert nichts, was der Distribution gehört. Um es auszublenden, entfernen Sie das Paket %3, oder setzen Sie %4 auf die Ordner, die der Host durchsuchen soll</translation>
    </message>
    <message>
        <source>KorvaneCMD was not found (looked at %1)</source>
        <translation>KorvaneCMD wurde nicht gefunden (gesucht in %1)</translation>
    </message>
    <message>
        <source>Could not save %1: %2</source>
        <translation>%1 konnte nicht gespeichert werden: %2</translation>
    </message>
    <message>
        <source>Updates of Korvane come from your distribution or vendor</source>
        <translation>Updates von Korvane kommen von Ihrer Distribution oder Ihrem Anbieter</translation>
    </message>
    <message>
        <source>This copy checks no web site for new versions. Your system&apos;s package manager, or whoever supplied Korvane, brings its updates.</source>
        <translation>Diese Kopie fragt keine Website nach neuen Versionen. Die Paketverwaltung Ihres Systems oder wer Ihnen Korvane geliefert hat, bringt die Updates.</translation>
    </message>
    <message>
        <source>Delete the group “%1”?</source>
        <translation>Die Gruppe „%1“ löschen?</translation>
    </message>
    <message>
        <source>1 plug-in is in it and will have no group.</source>
        <translation>1 Plug-In gehört zu ihr und hat danach keine Gruppe.</translation>
    </message>
    <message>
        <source>%1 plug-ins are in it and will have no group.</source>
        <translation>%1 Plug-Ins gehören zu ihr und haben danach keine Gruppe.</translation>
    </message>
    <message>
        <source>The folder %1 could not be made: %2</source>
        <translation>Der Ordner %1 konnte nicht angelegt werden: %2</translation>
    </message>
    <message>
        <source>unknown error</source>
        <translation>unbekannter Fehler</translation>
    </message>
    <message>
        <source>Saved a copy of %1 as %2; the program still reads %1, which was not changed</source>
        <translation>Eine Kopie von %1 wurde als %2 gespeichert; das Programm liest weiterhin %1, das unverändert blieb</translation>
    </message>
    <message>
        <source>“%1” could not be saved.</source>
        <translation>„%1“ konnte nicht gespeichert werden.</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Erneut versuchen</translation>
    </message>
    <message>
        <source>Save Elsewhere...</source>
        <translation>Anderswo speichern …</translation>
    </message>
    <message>
        <source>No plug-in is in a group</source>
        <translation>Kein Plug-In gehört zu einer Gruppe</translation>
    </message>
    <message>
        <source>Switched on at the next Apply</source>
        <translation>Wird beim nächsten Anwenden eingeschaltet</translation>
    </message>
    <message>
        <source>Switched off at the next Apply</source>
        <translation>Wird beim nächsten Anwenden ausgeschaltet</translation>
    </message>
    <message>
        <source>Changes only with administrator rights: you cannot write in its system folder</source>
        <translation>Nur mit Administratorrechten änderbar: Sie können in seinen Systemordner nicht schreiben</translation>
    </message>
    <message>
        <source>Checking for updates...</source>
        <translation>Suche nach Updates …</translation>
    </message>
    <message>
        <source>Switch On 1 Plug-In</source>
        <translation>1 Plug-In einschalten</translation>
    </message>
    <message>
        <source>Switch Off 1 Plug-In</source>
        <translation>1 Plug-In ausschalten</translation>
    </message>
    <message>
        <source>Switch On %1 Plug-Ins</source>
        <translation>%1 Plug-Ins einschalten</translation>
    </message>
    <message>
        <source>Switch Off %1 Plug-Ins</source>
        <translation>%1 Plug-Ins ausschalten</translation>
    </message>
    <message>
        <source>Switch on %1 plug-ins?</source>
        <translation>%1 Plug-Ins einschalten?</translation>
    </message>
    <message>
        <source>Switch off %1 plug-ins?</source>
        <translation>%1 Plug-Ins ausschalten?</translation>
    </message>
    <message>
        <source>Switch on %1 plug-ins, %2 of them not shown?</source>
        <translation>%1 Plug-Ins einschalten, davon %2 nicht angezeigt?</translation>
    </message>
    <message>
        <source>Switch off %1 plug-ins, %2 of them not shown?</source>
        <translation>%1 Plug-Ins ausschalten, davon %2 nicht angezeigt?</translation>
    </message>
    <message>
        <source>They move at the next Apply; Undo takes the marks back.</source>
        <translation>Sie werden beim nächsten Anwenden verschoben; „Widerrufen“ nimmt die Markierungen zurück.</translation>
    </message>
    <message>
        <source>Switch On</source>
        <translation>Einschalten</translation>
    </message>
    <message>
        <source>Switch Off</source>
        <translation>Ausschalten</translation>
    </message>
    <message>
        <source>1 change: %1 off, %2 on</source>
        <translation>1 Änderung: %1 aus, %2 ein</translation>
    </message>
    <message>
        <source>%1 changes: %2 off, %3 on</source>
        <translation>%1 Änderungen: %2 aus, %3 ein</translation>
    </message>
    <message>
        <source>%1 system plug-ins change only with administrator rights</source>
        <translation>%1 System-Plug-Ins sind nur mit Administratorrechten änderbar</translation>
    </message>
    <message>
        <source>version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>version %1 (%2)</source>
        <translation>Version %1 (%2)</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>“%1” is already installed</source>
        <translation>„%1“ ist bereits installiert</translation>
    </message>
    <message>
        <source>Installed: %1
Dropped: %2

Replace puts the installed copies in the trash; Keep Both installs the dropped one switched off.</source>
        <translation>Installiert: %1
Abgelegt: %2

„Ersetzen“ legt die installierten Kopien in den Papierkorb; „Beide behalten“ installiert die abgelegte ausgeschaltet.</translation>
    </message>
    <message>
        <source>Keep Both</source>
        <translation>Beide behalten</translation>
    </message>
    <message>
        <source>%1 not installed: %2 could not go to the trash: %3
</source>
        <translation>%1 nicht installiert: %2 konnte nicht in den Papierkorb: %3
</translation>
    </message>
    <message>
        <source>%1 was replaced and is now in the trash: %2
</source>
        <translation>%1 wurde ersetzt und liegt jetzt im Papierkorb: %2
</translation>
    </message>
    <message>
        <source>%1 not installed: %2
</source>
        <translation>%1 nicht installiert: %2
</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>und %1 weitere</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>%1 stays in %2: %3
</source>
        <translation>%1 bleibt in %2: %3
</translation>
    </message>
    <message>
        <source>%1 of %2 system plug-ins could not be moved</source>
        <translation>%1 von %2 System-Plug-Ins konnten nicht verschoben werden</translation>
    </message>
    <message>
        <source>System plug-ins not moved: %1
</source>
        <translation>System-Plug-Ins nicht verschoben: %1
</translation>
    </message>
    <message>
        <source>Administrator rights are needed to switch %1 system plug-ins</source>
        <translation>Um %1 System-Plug-Ins umzuschalten, sind Administratorrechte nötig</translation>
    </message>
    <message>
        <source>Korvane can copy the %1 to be switched on into your own plug-in folder instead, where they are on for you alone. The system folders stay as they are.</source>
        <translation>Korvane kann stattdessen die %1 einzuschaltenden in Ihren eigenen Plug-In-Ordner kopieren, wo sie nur für Sie eingeschaltet sind. Die Systemordner bleiben, wie sie sind.</translation>
    </message>
    <message>
        <source>Leave Them</source>
        <translation>So lassen</translation>
    </message>
    <message>
        <source>Copy to My Folder</source>
        <translation>In meinen Ordner kopieren</translation>
    </message>
    <message>
        <source>System plug-ins not switched: %1
</source>
        <translation>System-Plug-Ins nicht umgeschaltet: %1
</translation>
    </message>
    <message>
        <source>Copied %1 to %2
</source>
        <translation>%1 nach %2 kopiert
</translation>
    </message>
    <message>
        <source>1 change not applied</source>
        <translation>1 Änderung nicht angewendet</translation>
    </message>
    <message>
        <source>%1 changes not applied</source>
        <translation>%1 Änderungen nicht angewendet</translation>
    </message>
    <message>
        <source>Apply moves the marked %1 plug-ins now; Discard forgets the marks.</source>
        <translation>„Anwenden“ verschiebt die markierten %1-Plug-Ins jetzt; „Verwerfen“ vergisst die Markierungen.</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Anwenden</translation>
    </message>
    <message>
        <source>Save changes to the set “%1”?</source>
        <translation>Änderungen am Set „%1“ speichern?</translation>
    </message>
    <message>
        <source>Don&apos;t Save</source>
        <translation>Nicht speichern</translation>
    </message>
    <message>
        <source>The set “%1” was not saved</source>
        <translation>Das Set „%1“ wurde nicht gespeichert</translation>
    </message>
    <message>
        <source>Show plug-ins that are</source>
        <translation>Plug-Ins zeigen, die</translation>
    </message>
    <message>
        <source>On and off</source>
        <translation>Ein und aus</translation>
    </message>
    <message>
        <source>On only</source>
        <translation>Nur eingeschaltete</translation>
    </message>
    <message>
        <source>Off only</source>
        <translation>Nur ausgeschaltete</translation>
    </message>
    <message>
        <source>Show plug-ins installed for</source>
        <translation>Plug-Ins zeigen, installiert für</translation>
    </message>
    <message>
        <source>System and user</source>
        <translation>System und Benutzer</translation>
    </message>
    <message>
        <source>System only</source>
        <translation>Nur systemweit</translation>
    </message>
    <message>
        <source>User only</source>
        <translation>Nur Benutzer</translation>
    </message>
    <message>
        <source>no set</source>
        <translation>kein Set</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>Unbenannt</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>1 plug-in</source>
        <translation>1 Plug-In</translation>
    </message>
    <message>
        <source>%1 plug-ins</source>
        <translation>%1 Plug-Ins</translation>
    </message>
    <message>
        <source>%1 on</source>
        <translation>%1 ein</translation>
    </message>
    <message>
        <source>1 change pending: %1 off, %2 on</source>
        <translation>1 Änderung ausstehend: %1 aus, %2 ein</translation>
    </message>
    <message>
        <source>%1 changes pending: %2 off, %3 on</source>
        <translation>%1 Änderungen ausstehend: %2 aus, %3 ein</translation>
    </message>
    <message>
        <source>%1 shown</source>
        <translation>%1 angezeigt</translation>
    </message>
    <message>
        <source>Move Left</source>
        <translation>Nach links</translation>
    </message>
    <message>
        <source>Move Right</source>
        <translation>Nach rechts</translation>
    </message>
    <message>
        <source>No %1 plug-in was found. Korvane looked in:</source>
        <translation>Kein %1-Plug-In gefunden. Korvane hat gesucht in:</translation>
    </message>
    <message>
        <source>To add one, copy it into one of these folders and choose Plug-Ins &gt; Rescan, or drop it on this table.</source>
        <translation>Um eines hinzuzufügen, kopieren Sie es in einen dieser Ordner und wählen Plug-Ins &gt; Neu einlesen, oder ziehen Sie es auf diese Tabelle.</translation>
    </message>
    <message>
        <source>On</source>
        <translation>Ein</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
    <message>
        <source>The folder could not be shown</source>
        <translation>Der Ordner konnte nicht gezeigt werden</translation>
    </message>
    <message>
        <source>No file manager answered. The plug-in lies in:
%1</source>
        <translation>Kein Dateimanager hat geantwortet. Das Plug-In liegt in:
%1</translation>
    </message>
    <message>
        <source>Move to Trash...</source>
        <translation>In den Papierkorb legen …</translation>
    </message>
    <message>
        <source>Korvane %1</source>
        <translation>Korvane %1</translation>
    </message>
    <message>
        <source>It is not a Korvane backup.</source>
        <translation>Es ist keine Sicherung von Korvane.</translation>
    </message>
    <message>
        <source>Its list of plug-ins is damaged.</source>
        <translation>Ihre Liste der Plug-Ins ist beschädigt.</translation>
    </message>
    <message>
        <source>Backing up %1</source>
        <translation>%1 wird gesichert</translation>
    </message>
    <message>
        <source>Restoring %1</source>
        <translation>%1 wird wiederhergestellt</translation>
    </message>
    <message>
        <source>Checking the backup</source>
        <translation>Die Sicherung wird geprüft</translation>
    </message>
    <message>
        <source>It is a backup of another format (%1).</source>
        <translation>Es ist eine Sicherung eines anderen Formats (%1).</translation>
    </message>
    <message>
        <source>Unpacking the plug-ins</source>
        <translation>Die Plug-Ins werden entpackt</translation>
    </message>
    <message>
        <source>Putting the plug-ins back</source>
        <translation>Die Plug-Ins werden zurückgelegt</translation>
    </message>
    <message>
        <source>%1 Backup %2.tar.xz</source>
        <translation>%1 Sicherung %2.tar.xz</translation>
    </message>
    <message>
        <source>The backup could not be written</source>
        <translation>Die Sicherung konnte nicht geschrieben werden</translation>
    </message>
    <message>
        <source>Nothing was written to &quot;%1&quot;.</source>
        <translation>Unter „%1“ wurde nichts geschrieben.</translation>
    </message>
    <message>
        <source>%1 plug-ins backed up to %2
</source>
        <translation>%1 Plug-Ins gesichert in %2
</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is installed already</source>
        <translation>„%1“ ist bereits installiert</translation>
    </message>
    <message>
        <source>Replace puts the installed copy at &quot;%1&quot; in the trash and the saved one in its place.</source>
        <translation>„Ersetzen“ legt die installierte Kopie unter „%1“ in den Papierkorb und die gesicherte an ihre Stelle.</translation>
    </message>
    <message>
        <source>Keep Installed</source>
        <translation>Installierte behalten</translation>
    </message>
    <message>
        <source>Restored %1
</source>
        <translation>%1 wiederhergestellt
</translation>
    </message>
    <message>
        <source>Kept the installed %1
</source>
        <translation>Installiertes %1 behalten
</translation>
    </message>
    <message>
        <source>The backup was not restored</source>
        <translation>Die Sicherung wurde nicht wiederhergestellt</translation>
    </message>
    <message>
        <source>Not everything could be restored</source>
        <translation>Nicht alles konnte wiederhergestellt werden</translation>
    </message>
    <message>
        <source>Left out of the backup (neither a file, a folder nor a link inside its plug-in): %1</source>
        <translation>Nicht in der Sicherung (weder Datei noch Ordner noch ein Link innerhalb seines Plug-Ins): %1</translation>
    </message>
    <message>
        <source>Left out of the backup: %1 plug-ins in the distribution&apos;s folders, which its package manager restores</source>
        <translation>Nicht in der Sicherung: %1 Plug-Ins in den Ordnern der Distribution, die ihre Paketverwaltung wiederherstellt</translation>
    </message>
    <message>
        <source>%1: its folder %2 is not one of the format&apos;s folders</source>
        <translation>%1: Sein Ordner %2 ist keiner der Ordner des Formats</translation>
    </message>
    <message>
        <source>%1 plug-ins in the distribution&apos;s folders stay as they are: its package manager owns them
</source>
        <translation>%1 Plug-Ins in den Ordnern der Distribution bleiben, wie sie sind: Sie gehören ihrer Paketverwaltung
</translation>
    </message>
    <message>
        <source>Belongs to the distribution: Korvane does not switch it</source>
        <translation>Gehört zur Distribution: Korvane schaltet es nicht um</translation>
    </message>
    <message>
        <source>Switch Off Unused Formats</source>
        <translation>Ungenutzte Formate ausschalten</translation>
    </message>
    <message>
        <source>1 product is installed in more than one format.</source>
        <translation>1 Produkt ist in mehr als einem Format installiert.</translation>
    </message>
    <message>
        <source>%1 products are installed in more than one format.</source>
        <translation>%1 Produkte sind in mehr als einem Format installiert.</translation>
    </message>
    <message>
        <source>Untick the formats you do not use: their copies of those products are switched off. A product is never switched off in every format.</source>
        <translation>Entfernen Sie das Häkchen bei den Formaten, die Sie nicht verwenden: Deren Kopien dieser Produkte werden ausgeschaltet. Ein Produkt wird nie in allen Formaten ausgeschaltet.</translation>
    </message>
    <message>
        <source>Formats I use:</source>
        <translation>Formate, die ich verwende:</translation>
    </message>
    <message>
        <source>What would change</source>
        <translation>Was sich ändern würde</translation>
    </message>
    <message>
        <source>Plug-in</source>
        <translation>Plug-In</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <source>To</source>
        <translation>Nach</translation>
    </message>
    <message>
        <source>&amp;Switch Off and Apply</source>
        <translation>&amp;Ausschalten und anwenden</translation>
    </message>
    <message>
        <source>stays where it is: only the mark to switch it on goes</source>
        <translation>bleibt, wo es ist: nur die Markierung zum Einschalten entfällt</translation>
    </message>
    <message>
        <source>stays: %1</source>
        <translation>bleibt: %1</translation>
    </message>
    <message>
        <source>it cannot be moved</source>
        <translation>es kann nicht verschoben werden</translation>
    </message>
    <message>
        <source>1 plug-in will be switched off.</source>
        <translation>1 Plug-In wird ausgeschaltet.</translation>
    </message>
    <message>
        <source>%1 plug-ins will be switched off.</source>
        <translation>%1 Plug-Ins werden ausgeschaltet.</translation>
    </message>
    <message>
        <source>%1 will stay as they are.</source>
        <translation>%1 bleiben, wie sie sind.</translation>
    </message>
    <message>
        <source>%1 changes already marked in these formats are applied too.</source>
        <translation>%1 bereits markierte Änderungen in diesen Formaten werden ebenfalls angewendet.</translation>
    </message>
    <message>
        <source>Every format is ticked: nothing changes.</source>
        <translation>Alle Formate sind angehakt: Nichts ändert sich.</translation>
    </message>
    <message>
        <source>64-bit Intel (x86_64) On</source>
        <translation>64-Bit-Intel (x86_64) ein</translation>
    </message>
    <message>
        <source>64-bit Intel (x86_64) Off</source>
        <translation>64-Bit-Intel (x86_64) aus</translation>
    </message>
    <message>
        <source>Apple Silicon (arm64) On</source>
        <translation>Apple Silicon (arm64) ein</translation>
    </message>
    <message>
        <source>Apple Silicon (arm64) Off</source>
        <translation>Apple Silicon (arm64) aus</translation>
    </message>
    <message>
        <source>System</source>
        <translation>System</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Benutzer</translation>
    </message>
    <message>
        <source>Vendor</source>
        <translation>Hersteller</translation>
    </message>
    <message>
        <source>Architecture</source>
        <translation>Architektur</translation>
    </message>
    <message>
        <source>Package</source>
        <translation>Paket</translation>
    </message>
    <message>
        <source>%1 plug-ins in %2</source>
        <translation>%1 Plug-Ins in %2</translation>
    </message>
    <message>
        <source>All Plug-Ins</source>
        <translation>Alle Plug-Ins</translation>
    </message>
    <message>
        <source>Only products in more than one format</source>
        <translation>Nur Produkte in mehr als einem Format</translation>
    </message>
    <message>
        <source>Switch Off Unused Formats...</source>
        <translation>Ungenutzte Formate ausschalten …</translation>
    </message>
    <message>
        <source>All plug-ins</source>
        <translation>Alle Plug-Ins</translation>
    </message>
    <message>
        <source>1 product</source>
        <translation>1 Produkt</translation>
    </message>
    <message>
        <source>%1 products</source>
        <translation>%1 Produkte</translation>
    </message>
    <message>
        <source>%1 in more than one format</source>
        <translation>%1 in mehr als einem Format</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Formats</source>
        <translation>Formate</translation>
    </message>
    <message>
        <source>No plug-in is installed more than once.</source>
        <translation>Kein Plug-In ist mehr als einmal installiert.</translation>
    </message>
    <message>
        <source>Plug-ins installed more than once: %1</source>
        <translation>Mehrfach installierte Plug-Ins: %1</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>Architectures</source>
        <translation>Architekturen</translation>
    </message>
    <message>
        <source>Identifiers</source>
        <translation>Kennungen</translation>
    </message>
    <message>
        <source>Plug-ins inside</source>
        <translation>Enthaltene Plug-Ins</translation>
    </message>
    <message>
        <source>Show plug-ins built for</source>
        <translation>Plug-Ins zeigen, gebaut für</translation>
    </message>
    <message>
        <source>All architectures</source>
        <translation>Alle Architekturen</translation>
    </message>
    <message>
        <source>Show plug-ins of the format</source>
        <translation>Plug-Ins zeigen im Format</translation>
    </message>
    <message>
        <source>All formats</source>
        <translation>Alle Formate</translation>
    </message>
    <message>
        <source>Cannot be read</source>
        <translation>Nicht lesbar</translation>
    </message>
    <message>
        <source>No plug-in selected</source>
        <translation>Kein Plug-In ausgewählt</translation>
    </message>
    <message>
        <source>Companion content</source>
        <translation>Begleitinhalte</translation>
    </message>
    <message>
        <source>switched on at the next Apply</source>
        <translation>wird beim nächsten Anwenden eingeschaltet</translation>
    </message>
    <message>
        <source>switched off at the next Apply</source>
        <translation>wird beim nächsten Anwenden ausgeschaltet</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>Details Pane</source>
        <translation>Detailbereich</translation>
    </message>
    <message>
        <source>the folder %1 cannot be changed (no write access, locked or read-only)</source>
        <translation>der Ordner %1 kann nicht geändert werden (kein Schreibzugriff, gesperrt oder schreibgeschützt)</translation>
    </message>
    <message>
        <source>The companion %1 of %2 stays where it is: it lies in %3, which belongs to the distribution</source>
        <translation>Die Begleitdatei %1 von %2 bleibt, wo sie ist: Sie liegt in %3, das der Distribution gehört</translation>
    </message>
    <message>
        <source>%1 stays in %2: that folder was added by %3, and administrator rights are asked only for the formats&apos; own folders
</source>
        <translation>%1 bleibt in %2: Dieser Ordner kam durch %3 hinzu, und Administratorrechte werden nur für die eigenen Ordner der Formate erfragt
</translation>
    </message>
    <message>
        <source>%1 plug-ins in folders added by %2 were not switched</source>
        <translation>%1 Plug-Ins in Ordnern, die durch %2 hinzukamen, wurden nicht umgeschaltet</translation>
    </message>
    <message>
        <source>Korvane asks for administrator rights only for the formats&apos; own system folders. These folders need them and were added by a host&apos;s variable:
%1

Make the folder writable for yourself, or switch these plug-ins with KorvaneCMD run as root.</source>
        <translation>Korvane erfragt Administratorrechte nur für die eigenen Systemordner der Formate. Diese Ordner brauchen sie und kamen durch die Variable eines Hosts hinzu:
%1

Machen Sie den Ordner für sich beschreibbar, oder schalten Sie diese Plug-Ins mit KorvaneCMD als root um.</translation>
    </message>
    <message>
        <source>Installed copies</source>
        <translation>Installierte Kopien</translation>
    </message>
    <message>
        <source>Select in Table</source>
        <translation>In Tabelle auswählen</translation>
    </message>
    <message>
        <source>Only the plug-ins whose files could not be read; each row&apos;s tip says why</source>
        <translation>Nur die Plug-Ins, deren Dateien nicht gelesen werden konnten; der Tipp jeder Zeile sagt, warum</translation>
    </message>
    <message>
        <source>Show the Architecture column</source>
        <translation>Spalte „Architektur“ anzeigen</translation>
    </message>
    <message>
        <source>LV2 Plug-Ins Info</source>
        <translation>LV2-Plug-In-Info</translation>
    </message>
    <message>
        <source>Please select a LV2 Plug-In</source>
        <translation>Bitte wählen Sie ein LV2-Plug-In aus</translation>
    </message>
    <message>
        <source>VST3 Plug-Ins Info</source>
        <translation>VST3-Plug-In-Info</translation>
    </message>
    <message>
        <source>Please select a VST3 Plug-In</source>
        <translation>Bitte wählen Sie ein VST3-Plug-In aus</translation>
    </message>
    <message>
        <source>CLAP Plug-Ins Info</source>
        <translation>CLAP-Plug-In-Info</translation>
    </message>
    <message>
        <source>Please select a CLAP Plug-In</source>
        <translation>Bitte wählen Sie ein CLAP-Plug-In aus</translation>
    </message>
    <message>
        <source>LADSPA Plug-Ins Info</source>
        <translation>LADSPA-Plug-In-Info</translation>
    </message>
    <message>
        <source>Please select a LADSPA Plug-In</source>
        <translation>Bitte wählen Sie ein LADSPA-Plug-In aus</translation>
    </message>
    <message>
        <source>DSSI Plug-Ins Info</source>
        <translation>DSSI-Plug-In-Info</translation>
    </message>
    <message>
        <source>Please select a DSSI Plug-In</source>
        <translation>Bitte wählen Sie ein DSSI-Plug-In aus</translation>
    </message>
    <message>
        <source>Linux VST Plug-Ins Info</source>
        <translation>Linux-VST-Plug-In-Info</translation>
    </message>
    <message>
        <source>Please select a Linux VST Plug-In</source>
        <translation>Bitte wählen Sie ein Linux-VST-Plug-In aus</translation>
    </message>
    <message>
        <source>VST3 (macOS) Plug-Ins Info</source>
        <translation>VST3-Plug-In-Info (macOS)</translation>
    </message>
    <message>
        <source>Please select a VST3 (macOS) Plug-In</source>
        <translation>Bitte wählen Sie ein VST3-Plug-In (macOS) aus</translation>
    </message>
    <message>
        <source>CLAP (macOS) Plug-Ins Info</source>
        <translation>CLAP-Plug-In-Info (macOS)</translation>
    </message>
    <message>
        <source>Please select a CLAP (macOS) Plug-In</source>
        <translation>Bitte wählen Sie ein CLAP-Plug-In (macOS) aus</translation>
    </message>
    <message>
        <source>LV2 (macOS) Plug-Ins Info</source>
        <translation>LV2-Plug-In-Info (macOS)</translation>
    </message>
    <message>
        <source>Please select a LV2 (macOS) Plug-In</source>
        <translation>Bitte wählen Sie ein LV2-Plug-In (macOS) aus</translation>
    </message>
    <message>
        <source>AAX Plug-Ins Info</source>
        <translation>AAX-Plug-In-Info</translation>
    </message>
    <message>
        <source>Please select a AAX Plug-In</source>
        <translation>Bitte wählen Sie ein AAX-Plug-In aus</translation>
    </message>
</context>
</TS>
