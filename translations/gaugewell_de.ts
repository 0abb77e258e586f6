<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Localizable</name>
    <message>
        <source>The autostart folder cannot be created or written.</source>
        <translation>Der Autostart-Ordner kann nicht angelegt oder beschrieben werden.</translation>
    </message>
    <message>
        <source>The location of the Gaugewell program cannot be used for launch at login.</source>
        <translation>Der Ort des Gaugewell-Programms kann für den Start bei der Anmeldung nicht verwendet werden.</translation>
    </message>
    <message>
        <source>The autostart entry could not be written.</source>
        <translation>Der Autostart-Eintrag konnte nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>The autostart entry could not be removed.</source>
        <translation>Der Autostart-Eintrag konnte nicht entfernt werden.</translation>
    </message>
    <message>
        <source>Approve Gaugewell in System Settings to finish enabling this.</source>
        <translation>Erlaube Gaugewell in den Systemeinstellungen, um dies abzuschließen.</translation>
    </message>
    <message>
        <source>Launch at login needs a desktop session with an autostart folder.</source>
        <translation>Der Start bei der Anmeldung braucht eine Desktop-Sitzung mit Autostart-Ordner.</translation>
    </message>
    <message>
        <source>Sign in to access this account&apos;s usage.</source>
        <translation>Melde dich an, um die Nutzung dieses Kontos zu sehen.</translation>
    </message>
    <message>
        <source>Checking sign-in</source>
        <translation>Anmeldung wird geprüft</translation>
    </message>
    <message>
        <source>The last refresh failed. Retrying %@ — or refresh now.</source>
        <translation>Die letzte Aktualisierung ist fehlgeschlagen. Neuer Versuch %@ – oder jetzt aktualisieren.</translation>
    </message>
    <message>
        <source>The last refresh failed. Waiting before retrying.</source>
        <translation>Die letzte Aktualisierung ist fehlgeschlagen. Warte vor dem nächsten Versuch.</translation>
    </message>
    <message>
        <source>Complete sign-in in your browser</source>
        <translation>Schließe die Anmeldung im Browser ab</translation>
    </message>
    <message>
        <source>Disconnecting from Gaugewell</source>
        <translation>Verbindung zu Gaugewell wird getrennt</translation>
    </message>
    <message>
        <source>Session</source>
        <translation>Sitzung</translation>
    </message>
    <message>
        <source>Weekly</source>
        <translation>Wöchentlich</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>Eigenes</translation>
    </message>
    <message>
        <source>Window</source>
        <translation>Zeitfenster</translation>
    </message>
    <message>
        <source>%@ reached %d%%</source>
        <translation>%@ hat %d%% erreicht</translation>
    </message>
    <message>
        <source>%@ has %d%% used.</source>
        <translation>%@: %d%% verbraucht.</translation>
    </message>
    <message>
        <source>%@ limit reset</source>
        <translation>%@-Limit zurückgesetzt</translation>
    </message>
    <message>
        <source>%@ is available again.</source>
        <translation>%@ ist wieder verfügbar.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Stop waiting for the sign-in in your browser</source>
        <translation>Nicht länger auf die Anmeldung im Browser warten</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Trennen</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <source>Open the official Codex CLI installation guide</source>
        <translation>Die offizielle Installationsanleitung der Codex CLI öffnen</translation>
    </message>
    <message>
        <source>Use the provider&apos;s official sign-in flow</source>
        <translation>Den offiziellen Anmeldeweg des Anbieters verwenden</translation>
    </message>
    <message>
        <source>Next reset</source>
        <translation>Nächster Reset</translation>
    </message>
    <message>
        <source>Windows</source>
        <translation>Zeitfenster</translation>
    </message>
    <message>
        <source>Tokens, 7 days</source>
        <translation>Tokens, 7 Tage</translation>
    </message>
    <message>
        <source>Usage is not available yet.</source>
        <translation>Die Nutzung ist noch nicht verfügbar.</translation>
    </message>
    <message>
        <source>Usage Overview</source>
        <translation>Nutzungsübersicht</translation>
    </message>
    <message>
        <source>Subscription allowance and local token activity, with source scope kept explicit.</source>
        <translation>Abo-Kontingente und lokale Token-Aktivität, mit ausdrücklich genannter Quelle.</translation>
    </message>
    <message>
        <source>Refresh usage</source>
        <translation>Nutzung aktualisieren</translation>
    </message>
    <message>
        <source>Open settings</source>
        <translation>Einstellungen öffnen</translation>
    </message>
    <message>
        <source>Token Activity</source>
        <translation>Token-Aktivität</translation>
    </message>
    <message>
        <source>Daily totals reported by each available source</source>
        <translation>Tagessummen aus jeder verfügbaren Quelle</translation>
    </message>
    <message>
        <source>Codex history is account-scoped when supplied by app-server. Claude aggregate history is device-scoped and is not a subscription percentage.</source>
        <translation>Der Codex-Verlauf gilt für das Konto, wenn der app-server ihn liefert. Der Claude-Verlauf gilt für dieses Gerät und ist kein Anteil am Abo.</translation>
    </message>
    <message>
        <source>All Windows</source>
        <translation>Alle Zeitfenster</translation>
    </message>
    <message>
        <source>Every cap each provider currently reports, newest observation</source>
        <translation>Jedes Limit, das die Anbieter melden, mit dem neuesten Stand</translation>
    </message>
    <message>
        <source>No History Yet</source>
        <translation>Noch kein Verlauf</translation>
    </message>
    <message>
        <source>History appears after a provider exposes aggregate token data.</source>
        <translation>Der Verlauf erscheint, sobald ein Anbieter Token-Summen liefert.</translation>
    </message>
    <message>
        <source>%@ · %@: %@ tokens</source>
        <translation>%@ · %@: %@ Tokens</translation>
    </message>
    <message>
        <source>Tokens</source>
        <translation>Tokens</translation>
    </message>
    <message>
        <source>Provider</source>
        <translation>Anbieter</translation>
    </message>
    <message>
        <source>Consumed</source>
        <translation>Verbraucht</translation>
    </message>
    <message>
        <source>Remaining</source>
        <translation>Verbleibend</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Reset</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <source>Nearly used up</source>
        <translation>Fast aufgebraucht</translation>
    </message>
    <message>
        <source>Usage</source>
        <translation>Nutzung</translation>
    </message>
    <message>
        <source>Resets %@</source>
        <translation>Reset %@</translation>
    </message>
    <message>
        <source>Not started</source>
        <translation>Nicht begonnen</translation>
    </message>
    <message>
        <source>Unknown</source>
        <translation>Unbekannt</translation>
    </message>
    <message>
        <source>No active session yet — the window starts with your next request.</source>
        <translation>Noch keine aktive Sitzung – das Zeitfenster beginnt mit deiner nächsten Anfrage.</translation>
    </message>
    <message>
        <source>this %@ window</source>
        <translation>dieses Zeitfenster „%@“</translation>
    </message>
    <message>
        <source>No reset time reported</source>
        <translation>Keine Reset-Zeit gemeldet</translation>
    </message>
    <message>
        <source>This window runs %@</source>
        <translation>Dieses Zeitfenster läuft %@</translation>
    </message>
    <message>
        <source>%@, %@ used, resets %@</source>
        <translation>%@, %@ verbraucht, Reset %@</translation>
    </message>
    <message>
        <source>no data</source>
        <translation>keine Daten</translation>
    </message>
    <message>
        <source>Usage unavailable</source>
        <translation>Nutzung nicht verfügbar</translation>
    </message>
    <message>
        <source>%d percent %@</source>
        <translation>%d Prozent %@</translation>
    </message>
    <message>
        <source>CACHED</source>
        <translation>ZWISCHENGESPEICHERT</translation>
    </message>
    <message>
        <source>recent</source>
        <translation>aktuell</translation>
    </message>
    <message>
        <source>stale</source>
        <translation>veraltet</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>Both accounts connected</source>
        <translation>Beide Konten verbunden</translation>
    </message>
    <message>
        <source>1 account connected</source>
        <translation>1 Konto verbunden</translation>
    </message>
    <message>
        <source>You can finish without connecting</source>
        <translation>Du kannst auch ohne Verbindung abschließen</translation>
    </message>
    <message>
        <source>Your AI limits, at a glance</source>
        <translation>Deine KI-Limits auf einen Blick</translation>
    </message>
    <message>
        <source>Gaugewell reads the current limits reported by your
Codex and Claude accounts and keeps them in memory only.</source>
        <translation>Gaugewell liest die aktuellen Limits deiner
Codex- und Claude-Konten und hält sie nur im Arbeitsspeicher.</translation>
    </message>
    <message>
        <source>Live limits</source>
        <translation>Aktuelle Limits</translation>
    </message>
    <message>
        <source>Session and weekly allowances as each service reports them.</source>
        <translation>Sitzungs- und Wochenkontingente, wie jeder Dienst sie meldet.</translation>
    </message>
    <message>
        <source>Reset times</source>
        <translation>Reset-Zeiten</translation>
    </message>
    <message>
        <source>When each window starts over, in your clock format.</source>
        <translation>Wann jedes Zeitfenster neu beginnt, in deinem Uhrzeitformat.</translation>
    </message>
    <message>
        <source>No usage cache</source>
        <translation>Kein Nutzungs-Cache</translation>
    </message>
    <message>
        <source>Nothing collected is written to disk.</source>
        <translation>Nichts Gesammeltes wird auf die Festplatte geschrieben.</translation>
    </message>
    <message>
        <source>Not now</source>
        <translation>Nicht jetzt</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>2 of 2</source>
        <translation>2 von 2</translation>
    </message>
    <message>
        <source>Connect your accounts</source>
        <translation>Verbinde deine Konten</translation>
    </message>
    <message>
        <source>Each service opens its own official sign-in flow.</source>
        <translation>Jeder Dienst öffnet seinen eigenen offiziellen Anmeldeweg.</translation>
    </message>
    <message>
        <source>Uses Codex&apos;s managed ChatGPT session and account app-server.</source>
        <translation>Nutzt die von Codex verwaltete ChatGPT-Sitzung und den app-server des Kontos.</translation>
    </message>
    <message>
        <source>Uses browser OAuth; the resulting token stays in your keyring.</source>
        <translation>Nutzt OAuth im Browser; das Token bleibt in deinem Schlüsselbund.</translation>
    </message>
    <message>
        <source>Usage responses are never written to disk. You can connect or disconnect later in Settings.</source>
        <translation>Nutzungsdaten werden nie auf die Festplatte geschrieben. Verbinden und Trennen kannst du später in den Einstellungen.</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Welcome to Gaugewell</source>
        <translation>Willkommen bei Gaugewell</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Startup, refresh behavior and information about the app.</source>
        <translation>Start, Aktualisierung und Informationen über die App.</translation>
    </message>
    <message>
        <source>Startup</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>Launch at login</source>
        <translation>Bei der Anmeldung starten</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>While viewing: %d min</source>
        <translation>Beim Ansehen: %d Min.</translation>
    </message>
    <message>
        <source>In background: %d min</source>
        <translation>Im Hintergrund: %d Min.</translation>
    </message>
    <message>
        <source>Notifications</source>
        <translation>Benachrichtigungen</translation>
    </message>
    <message>
        <source>Usage alerts</source>
        <translation>Nutzungswarnungen</translation>
    </message>
    <message>
        <source>Alert at</source>
        <translation>Warnen bei</translation>
    </message>
    <message>
        <source>Alert at %@</source>
        <translation>Warnen bei %@</translation>
    </message>
    <message>
        <source>Window resets</source>
        <translation>Zurückgesetzte Zeitfenster</translation>
    </message>
    <message>
        <source>Notify when an allowance becomes available again</source>
        <translation>Benachrichtigen, wenn ein Kontingent wieder verfügbar ist</translation>
    </message>
    <message>
        <source>Diagnostics</source>
        <translation>Diagnose</translation>
    </message>
    <message>
        <source>Messages are sanitized; raw payloads, paths, prompts and account identifiers are never recorded.</source>
        <translation>Meldungen sind bereinigt; Rohdaten, Pfade, Prompts und Konto-IDs werden nie aufgezeichnet.</translation>
    </message>
    <message>
        <source>Export Diagnostics…</source>
        <translation>Diagnose exportieren …</translation>
    </message>
    <message>
        <source>Save a sanitized report with app, system and provider compatibility information.</source>
        <translation>Einen bereinigten Bericht mit App-, System- und Anbieterinformationen speichern.</translation>
    </message>
    <message>
        <source>Privacy</source>
        <translation>Datenschutz</translation>
    </message>
    <message>
        <source>Usage exists in memory for this launch only.</source>
        <translation>Nutzungsdaten existieren nur im Arbeitsspeicher, nur für diesen Start.</translation>
    </message>
    <message>
        <source>Authentication stays in the provider or your keyring.</source>
        <translation>Die Anmeldung bleibt beim Anbieter oder in deinem Schlüsselbund.</translation>
    </message>
    <message>
        <source>Conversation content is never read.</source>
        <translation>Gesprächsinhalte werden nie gelesen.</translation>
    </message>
    <message>
        <source>Codex uses its account app-server. Claude uses direct OAuth and its personal usage endpoint.</source>
        <translation>Codex nutzt seinen Konto-app-server. Claude nutzt direktes OAuth und seinen persönlichen Nutzungsendpunkt.</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Über</translation>
    </message>
    <message>
        <source>Shows how much of your Codex and Claude subscription allowances you have used, and when each window resets. The widget feed serves the same numbers on 127.0.0.1 for status bars.</source>
        <translation>Zeigt, wie viel deiner Codex- und Claude-Abo-Kontingente du verbraucht hast und wann jedes Zeitfenster zurückgesetzt wird. Der Widget-Feed liefert dieselben Zahlen auf 127.0.0.1 für Statusleisten.</translation>
    </message>
    <message>
        <source>Diagnostics appear after the first refresh.</source>
        <translation>Diagnosen erscheinen nach der ersten Aktualisierung.</translation>
    </message>
    <message>
        <source>No issues reported.</source>
        <translation>Keine Probleme gemeldet.</translation>
    </message>
    <message>
        <source>Diagnostics could not be exported.</source>
        <translation>Die Diagnose konnte nicht exportiert werden.</translation>
    </message>
    <message>
        <source>Diagnostics exported.</source>
        <translation>Diagnose exportiert.</translation>
    </message>
    <message>
        <source>Menu bar preview: %@</source>
        <translation>Vorschau der Leiste: %@</translation>
    </message>
    <message>
        <source>Menu Bar</source>
        <translation>Leiste</translation>
    </message>
    <message>
        <source>Choose the information that remains visible at a glance.</source>
        <translation>Wähle, was auf einen Blick sichtbar bleibt.</translation>
    </message>
    <message>
        <source>Content</source>
        <translation>Inhalt</translation>
    </message>
    <message>
        <source>Icons only</source>
        <translation>Nur Symbole</translation>
    </message>
    <message>
        <source>Show percentage</source>
        <translation>Prozent zeigen</translation>
    </message>
    <message>
        <source>Percentage</source>
        <translation>Prozent</translation>
    </message>
    <message>
        <source>Show reset time</source>
        <translation>Reset-Zeit zeigen</translation>
    </message>
    <message>
        <source>Uses your system clock format</source>
        <translation>Nutzt das Uhrzeitformat deines Systems</translation>
    </message>
    <message>
        <source>Layout</source>
        <translation>Darstellung</translation>
    </message>
    <message>
        <source>Density</source>
        <translation>Dichte</translation>
    </message>
    <message>
        <source>Compact</source>
        <translation>Kompakt</translation>
    </message>
    <message>
        <source>Detailed</source>
        <translation>Ausführlich</translation>
    </message>
    <message>
        <source>Usage window</source>
        <translation>Zeitfenster</translation>
    </message>
    <message>
        <source>Short / session</source>
        <translation>Kurz / Sitzung</translation>
    </message>
    <message>
        <source>Best available</source>
        <translation>Bestes verfügbares</translation>
    </message>
    <message>
        <source>Preview</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <source>Install Codex CLI</source>
        <translation>Codex CLI installieren</translation>
    </message>
    <message>
        <source>Accounts</source>
        <translation>Konten</translation>
    </message>
    <message>
        <source>Connect the services whose live limits you want to see.</source>
        <translation>Verbinde die Dienste, deren aktuelle Limits du sehen willst.</translation>
    </message>
    <message>
        <source>Connections</source>
        <translation>Verbindungen</translation>
    </message>
    <message>
        <source>Credentials stay in each service or your keyring. Usage values are never cached.</source>
        <translation>Zugangsdaten bleiben beim jeweiligen Dienst oder in deinem Schlüsselbund. Nutzungswerte werden nie zwischengespeichert.</translation>
    </message>
    <message>
        <source>Menu bar</source>
        <translation>Leiste</translation>
    </message>
    <message>
        <source>Show %@</source>
        <translation>%@ zeigen</translation>
    </message>
    <message>
        <source>Codex, then Claude</source>
        <translation>Codex, dann Claude</translation>
    </message>
    <message>
        <source>Claude, then Codex</source>
        <translation>Claude, dann Codex</translation>
    </message>
    <message>
        <source>Reverse</source>
        <translation>Umkehren</translation>
    </message>
    <message>
        <source>Provider order</source>
        <translation>Reihenfolge</translation>
    </message>
    <message>
        <source>Unavailable in this build</source>
        <translation>In dieser Version nicht verfügbar</translation>
    </message>
    <message>
        <source>Permission will be requested when enabled</source>
        <translation>Die Erlaubnis wird beim Einschalten erfragt</translation>
    </message>
    <message>
        <source>Notifications are turned off on this desktop</source>
        <translation>Benachrichtigungen sind auf diesem Desktop ausgeschaltet</translation>
    </message>
    <message>
        <source>Only newly crossed thresholds are announced</source>
        <translation>Nur neu überschrittene Schwellen werden gemeldet</translation>
    </message>
    <message>
        <source>Settings pages</source>
        <translation>Einstellungsseiten</translation>
    </message>
    <message>
        <source>Gaugewell Settings</source>
        <translation>Gaugewell-Einstellungen</translation>
    </message>
    <message>
        <source>Plain text (*.txt)</source>
        <translation>Text (*.txt)</translation>
    </message>
    <message>
        <source>Usage Unavailable</source>
        <translation>Nutzung nicht verfügbar</translation>
    </message>
    <message>
        <source>Open Dashboard</source>
        <translation>Übersicht öffnen</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Quit Gaugewell</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>No system tray was found. Add a tray to your panel, or show `gaugewell widget` in your status bar, to keep Gaugewell at hand; it keeps running in the background.</source>
        <translation>Kein Systembereich gefunden. Füge deiner Leiste einen hinzu oder zeige `gaugewell widget` in deiner Statusleiste, um Gaugewell griffbereit zu haben; es läuft im Hintergrund weiter.</translation>
    </message>
    <message>
        <source>Refreshing…</source>
        <translation>Wird aktualisiert …</translation>
    </message>
    <message>
        <source>Refreshing</source>
        <translation>Wird aktualisiert</translation>
    </message>
    <message>
        <source>Awaiting data</source>
        <translation>Warte auf Daten</translation>
    </message>
    <message>
        <source>Updated %@</source>
        <translation>Aktualisiert %@</translation>
    </message>
    <message>
        <source>%@ used</source>
        <translation>%@ verbraucht</translation>
    </message>
    <message>
        <source>Gaugewell unavailable</source>
        <translation>Gaugewell nicht verfügbar</translation>
    </message>
    <message>
        <source>, usage unavailable</source>
        <translation>, Nutzung nicht verfügbar</translation>
    </message>
    <message>
        <source> consumed</source>
        <translation> verbraucht</translation>
    </message>
    <message>
        <source> remaining</source>
        <translation> verbleibend</translation>
    </message>
    <message>
        <source>, resets at </source>
        <translation>, Reset um </translation>
    </message>
    <message>
        <source>No Providers Shown</source>
        <translation>Keine Anbieter angezeigt</translation>
    </message>
    <message>
        <source>Enable a provider in Settings.</source>
        <translation>Schalte einen Anbieter in den Einstellungen ein.</translation>
    </message>
    <message>
        <source>The Codex command-line tool was not found. Install it, then connect.</source>
        <translation>Das Codex-Kommandozeilenwerkzeug wurde nicht gefunden. Installiere es und verbinde dann.</translation>
    </message>
    <message>
        <source>This Codex command-line tool is too old. Update it, then connect.</source>
        <translation>Dieses Codex-Kommandozeilenwerkzeug ist zu alt. Aktualisiere es und verbinde dann.</translation>
    </message>
    <message>
        <source>Command-line tool not found</source>
        <translation>Kommandozeilenwerkzeug nicht gefunden</translation>
    </message>
    <message>
        <source>Codex must be updated to support live usage access</source>
        <translation>Codex muss aktualisiert werden, um die aktuelle Nutzung abrufen zu können</translation>
    </message>
    <message>
        <source>Authentication status could not be checked</source>
        <translation>Anmeldestatus konnte nicht geprüft werden</translation>
    </message>
    <message>
        <source>ChatGPT sign-in required</source>
        <translation>ChatGPT-Anmeldung erforderlich</translation>
    </message>
    <message>
        <source>ChatGPT account</source>
        <translation>ChatGPT-Konto</translation>
    </message>
    <message>
        <source>OpenAI API key</source>
        <translation>OpenAI-API-Schlüssel</translation>
    </message>
    <message>
        <source>Codex account</source>
        <translation>Codex-Konto</translation>
    </message>
    <message>
        <source>Claude account · keyring</source>
        <translation>Claude-Konto · Schlüsselbund</translation>
    </message>
    <message>
        <source>Claude sign-in required</source>
        <translation>Claude-Anmeldung erforderlich</translation>
    </message>
    <message>
        <source>Account available — connect to authorize usage access</source>
        <translation>Konto verfügbar – verbinde, um den Zugriff auf die Nutzung zu erlauben</translation>
    </message>
    <message>
        <source>Claude sign-in was not completed</source>
        <translation>Claude-Anmeldung wurde nicht abgeschlossen</translation>
    </message>
    <message>
        <source>Sign-in timed out</source>
        <translation>Zeitüberschreitung bei der Anmeldung</translation>
    </message>
    <message>
        <source>ChatGPT sign-in was not completed</source>
        <translation>ChatGPT-Anmeldung wurde nicht abgeschlossen</translation>
    </message>
    <message>
        <source>Tokens revoked and removed from the keyring</source>
        <translation>Tokens widerrufen und aus dem Schlüsselbund entfernt</translation>
    </message>
    <message>
        <source>Claude credentials could not be removed</source>
        <translation>Claude-Zugangsdaten konnten nicht entfernt werden</translation>
    </message>
    <message>
        <source>ChatGPT sign-out could not be completed</source>
        <translation>ChatGPT-Abmeldung konnte nicht abgeschlossen werden</translation>
    </message>
    <message>
        <source>Signed out from ChatGPT</source>
        <translation>Von ChatGPT abgemeldet</translation>
    </message>
    <message>
        <source>Opens the official ChatGPT sign-in managed by Codex.</source>
        <translation>Öffnet die offizielle, von Codex verwaltete ChatGPT-Anmeldung.</translation>
    </message>
    <message>
        <source>Signs out the shared ChatGPT session used by Gaugewell and the Codex CLI.</source>
        <translation>Beendet die ChatGPT-Sitzung, die Gaugewell und die Codex CLI gemeinsam nutzen.</translation>
    </message>
    <message>
        <source>Opens Claude sign-in in your browser. Inference permission is never requested.</source>
        <translation>Öffnet die Claude-Anmeldung in deinem Browser. Eine Berechtigung für Inferenz wird nie angefragt.</translation>
    </message>
    <message>
        <source>Revokes this app&apos;s Claude tokens and removes them from your keyring.</source>
        <translation>Widerruft die Claude-Tokens dieser App und entfernt sie aus deinem Schlüsselbund.</translation>
    </message>
    <message>
        <source>Codex collection uses a capability-probed experimental local protocol.</source>
        <translation>Die Codex-Erfassung nutzt ein experimentelles lokales Protokoll, dessen Fähigkeiten vorab geprüft werden.</translation>
    </message>
    <message>
        <source>The Codex executable was found but could not be capability-probed.</source>
        <translation>Das Codex-Programm wurde gefunden, seine Fähigkeiten konnten aber nicht geprüft werden.</translation>
    </message>
    <message>
        <source>Codex is not installed or its executable is not configured.</source>
        <translation>Codex ist nicht installiert oder sein Programm ist nicht eingerichtet.</translation>
    </message>
    <message>
        <source>Codex usage collection failed without exposing provider output.</source>
        <translation>Die Erfassung der Codex-Nutzung ist fehlgeschlagen, ohne die Ausgabe des Anbieters offenzulegen.</translation>
    </message>
    <message>
        <source>Codex usage data did not match the known normalized schema.</source>
        <translation>Die Codex-Nutzungsdaten passten nicht zum bekannten normalisierten Schema.</translation>
    </message>
    <message>
        <source>The Codex app-server output stream could not be monitored safely.</source>
        <translation>Der Ausgabestrom des Codex-app-servers konnte nicht sicher überwacht werden.</translation>
    </message>
    <message>
        <source>The collector could not send a request to Codex app-server.</source>
        <translation>Die Erfassung konnte keine Anfrage an den Codex-app-server senden.</translation>
    </message>
    <message>
        <source>Codex app-server emitted a line outside the expected JSON protocol.</source>
        <translation>Der Codex-app-server hat eine Zeile außerhalb des erwarteten JSON-Protokolls ausgegeben.</translation>
    </message>
    <message>
        <source>Codex app-server ended before returning the requested usage data.</source>
        <translation>Der Codex-app-server wurde beendet, bevor er die angeforderten Nutzungsdaten geliefert hat.</translation>
    </message>
    <message>
        <source>Codex app-server returned an incomplete or incompatible protocol response.</source>
        <translation>Der Codex-app-server hat eine unvollständige oder inkompatible Protokollantwort geliefert.</translation>
    </message>
    <message>
        <source>Codex exceeded the collector&apos;s safe output limit.</source>
        <translation>Codex hat die sichere Ausgabegrenze der Erfassung überschritten.</translation>
    </message>
    <message>
        <source>The Codex app-server process could not be started.</source>
        <translation>Der Prozess des Codex-app-servers konnte nicht gestartet werden.</translation>
    </message>
    <message>
        <source>Codex declined a local usage request; sign-in or protocol compatibility may need attention.</source>
        <translation>Codex hat eine lokale Nutzungsanfrage abgelehnt; prüfe gegebenenfalls die Anmeldung oder die Kompatibilität des Protokolls.</translation>
    </message>
    <message>
        <source>Codex did not respond before the collection deadline.</source>
        <translation>Codex hat nicht vor Ablauf der Erfassungsfrist geantwortet.</translation>
    </message>
    <message>
        <source>Codex returned no supported usage windows; its app-server response may have changed.</source>
        <translation>Codex hat keine unterstützten Nutzungszeitfenster geliefert; die Antwort seines app-servers hat sich vielleicht geändert.</translation>
    </message>
    <message>
        <source>A Codex allowance window was rejected because its percentage was out of range.</source>
        <translation>Ein Zeitfenster eines Codex-Kontingents wurde verworfen, weil sein Prozentwert außerhalb des gültigen Bereichs lag.</translation>
    </message>
    <message>
        <source>Codex account token history was unavailable; allowance windows were retained.</source>
        <translation>Der Token-Verlauf des Codex-Kontos war nicht verfügbar; die Zeitfenster der Kontingente wurden beibehalten.</translation>
    </message>
    <message>
        <source>Codex account token history did not match the known schema.</source>
        <translation>Der Token-Verlauf des Codex-Kontos passte nicht zum bekannten Schema.</translation>
    </message>
    <message>
        <source>A Codex history bucket was rejected because it had invalid semantics.</source>
        <translation>Ein Abschnitt des Codex-Verlaufs wurde verworfen, weil seine Angaben ungültig waren.</translation>
    </message>
    <message>
        <source>Claude usage is queried live from an authenticated, undocumented personal-account endpoint.</source>
        <translation>Die Claude-Nutzung wird live über einen authentifizierten, nicht dokumentierten Endpunkt für persönliche Konten abgefragt.</translation>
    </message>
    <message>
        <source>A Claude usage window was rejected because its percentage was out of range.</source>
        <translation>Ein Claude-Nutzungszeitfenster wurde verworfen, weil sein Prozentwert außerhalb des gültigen Bereichs lag.</translation>
    </message>
    <message>
        <source>A Claude reset timestamp did not match the known schema.</source>
        <translation>Eine Claude-Reset-Zeit passte nicht zum bekannten Schema.</translation>
    </message>
    <message>
        <source>Claude returned no supported usage windows; its account response may have changed.</source>
        <translation>Claude hat keine unterstützten Nutzungszeitfenster geliefert; die Antwort des Kontos hat sich vielleicht geändert.</translation>
    </message>
    <message>
        <source>Sign in to Claude to read account usage.</source>
        <translation>Melde dich bei Claude an, um die Nutzung des Kontos abzurufen.</translation>
    </message>
    <message>
        <source>Claude authorization expired. Reconnect Claude.</source>
        <translation>Die Claude-Autorisierung ist abgelaufen. Verbinde Claude erneut.</translation>
    </message>
    <message>
        <source>Claude rejected the account authorization. Reconnect Claude.</source>
        <translation>Claude hat die Autorisierung des Kontos abgelehnt. Verbinde Claude erneut.</translation>
    </message>
    <message>
        <source>Claude temporarily rate-limited usage checks.</source>
        <translation>Claude hat die Nutzungsabfragen vorübergehend begrenzt.</translation>
    </message>
    <message>
        <source>Claude usage is temporarily unavailable.</source>
        <translation>Die Claude-Nutzung ist vorübergehend nicht verfügbar.</translation>
    </message>
    <message>
        <source>Claude returned an invalid network response.</source>
        <translation>Claude hat eine ungültige Netzwerkantwort geliefert.</translation>
    </message>
    <message>
        <source>Claude usage did not match the known account schema.</source>
        <translation>Die Claude-Nutzung passte nicht zum bekannten Kontoschema.</translation>
    </message>
    <message>
        <source>Claude usage could not be refreshed from the account.</source>
        <translation>Die Claude-Nutzung konnte nicht vom Konto aktualisiert werden.</translation>
    </message>
    <message>
        <source>Five-hour</source>
        <translation>Fünf-Stunden</translation>
    </message>
    <message>
        <source>Seven-day</source>
        <translation>Sieben-Tage</translation>
    </message>
    <message>
        <source>OAuth apps weekly</source>
        <translation>OAuth-Apps wöchentlich</translation>
    </message>
    <message>
        <source>Opus weekly</source>
        <translation>Opus wöchentlich</translation>
    </message>
    <message>
        <source>Sonnet weekly</source>
        <translation>Sonnet wöchentlich</translation>
    </message>
    <message>
        <source>Cowork weekly</source>
        <translation>Cowork wöchentlich</translation>
    </message>
</context>
</TS>
