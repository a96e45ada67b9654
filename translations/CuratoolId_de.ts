<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>AboutDialog</name>
    <message>
        <source>About</source>
        <translation>Info</translation>
    </message>
</context>
<context>
    <name>CAuthentication</name>
    <message>
        <source>Authentication</source>
        <translation>Authentifizierung</translation>
    </message>
    <message>
        <source>Incorrect password. Please try again.</source>
        <translation>Falsches Passwort. Bitte versuchen Sie es erneut.</translation>
    </message>
</context>
<context>
    <name>CGallery</name>
    <message>
        <source>My Content</source>
        <translation>Meine Inhalte</translation>
    </message>
</context>
<context>
    <name>CWorkFlow</name>
    <message>
        <source>Select a folder for new gallery location</source>
        <translation>Ordner für den neuen Speicherort der Galerie auswählen</translation>
    </message>
    <message>
        <source>Do you want to remove all the installed Galleries?</source>
        <translation>Möchten Sie alle installierten Galerien entfernen?</translation>
    </message>
    <message>
        <source>Invalid argument.</source>
        <translation>Ungültiges Argument.</translation>
    </message>
</context>
<context>
    <name>GalleryChooser</name>
    <message>
        <source>Select a Gallery</source>
        <translation>Galerie auswählen</translation>
    </message>
    <message>
        <source>Select a Gallery to manage</source>
        <translation>Wählen Sie die zu verwaltende Galerie aus</translation>
    </message>
    <message>
        <source>Uninstall</source>
        <translation>Deinstallieren</translation>
    </message>
    <message>
        <source>Other Gallery...</source>
        <translation>Andere Galerie...</translation>
    </message>
    <message>
        <source>Gallery Collections</source>
        <translation>Galerie-Sammlungen</translation>
    </message>
    <message>
        <source>Select a Gallery Collection to install</source>
        <translation>Zu installierende Galerie-Sammlung auswählen</translation>
    </message>
    <message>
        <source>The selected Gallery will be completely removed from the system. Do you want to continue?</source>
        <translation>Die ausgewählte Galerie wird vollständig vom System entfernt. Möchten Sie fortfahren?</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Categories to Add</source>
        <translation>Hinzuzufügende Kategorien</translation>
    </message>
    <message>
        <source>Categories to Update</source>
        <translation>Zu aktualisierende Kategorien</translation>
    </message>
    <message>
        <source>Categories to Remove</source>
        <translation>Zu entfernende Kategorien</translation>
    </message>
    <message>
        <source>ZOLTA Primer Collection</source>
        <translation>ZOLTA Primer Collection</translation>
    </message>
    <message>
        <source>Categories to Add/Remove</source>
        <translation>Kategorien hinzufügen/entfernen</translation>
    </message>
    <message>
        <source>Available Updates</source>
        <translation>Verfügbare Updates</translation>
    </message>
    <message>
        <source>Summary of Changes</source>
        <translation>Zusammenfassung der Änderungen</translation>
    </message>
    <message>
        <source>Installation folder for Gallery content:</source>
        <translation>Installationsordner für Galerie-Inhalte:</translation>
    </message>
    <message>
        <source>Browse</source>
        <translation>Durchsuchen</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Info</translation>
    </message>
    <message>
        <source>Next &gt;&gt;</source>
        <translation>Weiter &gt;&gt;</translation>
    </message>
    <message>
        <source>Connection Options</source>
        <translation>Verbindungsoptionen</translation>
    </message>
    <message>
        <source>Failed to read current state of the Gallery.</source>
        <translation>Der aktuelle Zustand der Galerie konnte nicht gelesen werden.</translation>
    </message>
    <message>
        <source>The Gallery changes have been canceled.</source>
        <translation>Die Änderungen an der Galerie wurden abgebrochen.</translation>
    </message>
    <message>
        <source>The Curatool encountered an error while trying to make the changes. The changes have not been completed.</source>
        <translation>Beim Ausführen der Änderungen ist in Curatool ein Fehler aufgetreten. Die Änderungen wurden nicht abgeschlossen.</translation>
    </message>
    <message>
        <source>All Categories</source>
        <translation>Alle Kategorien</translation>
    </message>
    <message>
        <source>All Updates</source>
        <translation>Alle Updates</translation>
    </message>
    <message>
        <source>No updates available at this time</source>
        <translation>Derzeit sind keine Updates verfügbar</translation>
    </message>
    <message>
        <source>Do you also want to delete all the information about this Gallery?</source>
        <translation>Möchten Sie auch alle Informationen zu dieser Galerie löschen?</translation>
    </message>
    <message>
        <source>Select a folder for new gallery location</source>
        <translation>Ordner für den neuen Speicherort der Galerie auswählen</translation>
    </message>
</context>
<context>
    <name>PasswordDialog</name>
    <message>
        <source>Authentication</source>
        <translation>Authentifizierung</translation>
    </message>
    <message>
        <source>Type your user name and password.</source>
        <translation>Geben Sie Ihren Benutzernamen und Ihr Passwort ein.</translation>
    </message>
    <message>
        <source>User Name:</source>
        <translation>Benutzername:</translation>
    </message>
    <message>
        <source>Password:</source>
        <translation>Passwort:</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>ProgressDialog</name>
    <message>
        <source>ZOLTA Curatool: Please Wait...</source>
        <translation>ZOLTA Curatool: Bitte warten...</translation>
    </message>
    <message>
        <source>Current File:</source>
        <translation>Datei:</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Category:</source>
        <translation>Kategorie:</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <source>Downloading...</source>
        <translation>Wird heruntergeladen...</translation>
    </message>
    <message>
        <source>Installing...</source>
        <translation>Wird installiert...</translation>
    </message>
    <message>
        <source>Uninstalling...</source>
        <translation>Wird deinstalliert...</translation>
    </message>
    <message>
        <source>Reading...</source>
        <translation>Wird gelesen...</translation>
    </message>
    <message>
        <source>Canceled...</source>
        <translation>Abgebrochen...</translation>
    </message>
    <message>
        <source>Complete.</source>
        <translation>Abgeschlossen.</translation>
    </message>
    <message>
        <source>Failed.</source>
        <translation>Fehlgeschlagen.</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>The Gallery changes are complete.</source>
        <translation>Die Änderungen an der Galerie sind abgeschlossen.</translation>
    </message>
</context>
<context>
    <name>ProxyAuth</name>
    <message>
        <source>Proxy Authentication</source>
        <translation>Proxy-Authentifizierung</translation>
    </message>
    <message>
        <source>Proxy Host:</source>
        <translation>Proxy-Server:</translation>
    </message>
    <message>
        <source>User Name:</source>
        <translation>Benutzername:</translation>
    </message>
    <message>
        <source>Password:</source>
        <translation>Passwort:</translation>
    </message>
    <message>
        <source>:</source>
        <translation>:</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Proxy Authentication Required</source>
        <translation>Proxy-Authentifizierung erforderlich</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>You must have write permissions for this directory.</source>
        <translation>Sie benötigen Schreibrechte für diesen Ordner.</translation>
    </message>
    <message>
        <source>Curatool</source>
        <translation>Curatool</translation>
    </message>
    <message>
        <source>Could not load the configuration.</source>
        <translation>Die Konfiguration konnte nicht geladen werden.</translation>
    </message>
    <message>
        <source>You must have write permissions for the destination directory:
%1</source>
        <translation>Sie benötigen Schreibrechte für den Zielordner:
%1</translation>
    </message>
    <message>
        <source>Please select another directory.</source>
        <translation>Bitte wählen Sie einen anderen Ordner.</translation>
    </message>
    <message>
        <source>Could not read preferences.</source>
        <translation>Die Einstellungen konnten nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Could not download the file:
%1
Make sure the computer has an active Internet connection.</source>
        <translation>Die Datei konnte nicht heruntergeladen werden:
%1
Stellen Sie sicher, dass der Computer mit dem Internet verbunden ist.</translation>
    </message>
    <message>
        <source>Could not save preferences.</source>
        <translation>Die Einstellungen konnten nicht gespeichert werden.</translation>
    </message>
    <message>
        <source>Could not copy the configuration files.</source>
        <translation>Die Konfigurationsdateien konnten nicht kopiert werden.</translation>
    </message>
    <message>
        <source>Could not register file associations.</source>
        <translation>Die Dateizuordnungen konnten nicht registriert werden.</translation>
    </message>
    <message>
        <source>Cannot find the source for this Gallery.</source>
        <translation>Die Quelle für diese Galerie wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>There is an update for the application. Click OK to start.</source>
        <translation>Für die Anwendung ist ein Update verfügbar. Klicken Sie auf OK, um es zu starten.</translation>
    </message>
    <message>
        <source>Could not download the update for Curatool.</source>
        <translation>Das Update für Curatool konnte nicht heruntergeladen werden.</translation>
    </message>
    <message>
        <source>Uninstall complete.</source>
        <translation>Die Deinstallation ist abgeschlossen.</translation>
    </message>
    <message>
        <source>Another instance of this application is running. Please use it instead.</source>
        <translation>Eine andere Instanz dieser Anwendung wird bereits ausgeführt. Bitte verwenden Sie diese.</translation>
    </message>
</context>
<context>
    <name>ReadProgress</name>
    <message>
        <source>Gathering required information...</source>
        <translation>Erforderliche Informationen werden gesammelt...</translation>
    </message>
</context>
<context>
    <name>WaitForCD</name>
    <message>
        <source>Dialog</source>
        <translation>Dialog</translation>
    </message>
    <message>
        <source>Browse</source>
        <translation>Durchsuchen</translation>
    </message>
</context>
<context>
    <name>WaitForCDDlg</name>
    <message>
        <source>ZOLTA Curatool</source>
        <translation>ZOLTA Curatool</translation>
    </message>
    <message>
        <source>Please insert Gallery CD: </source>
        <translation>Bitte legen Sie die Galerie-CD ein: </translation>
    </message>
</context>
</TS>
