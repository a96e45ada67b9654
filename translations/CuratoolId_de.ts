<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
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
</TS>
