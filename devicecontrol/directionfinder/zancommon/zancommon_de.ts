<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>ZANCharacteristics</name>
    <message>
        <source>No antennas connected to device.</source>
        <translation>Am Gerät ist keine Antenne angeschlossen.</translation>
    </message>
    <message>
        <source>Antenna %1 (%2 MHz - %3 MHz) is not supported by the ZAN device with the currently installed options. It must be disabled.</source>
        <translation>Antenne %1 (%2 MHz - %3 MHz) wird vom ZAN-Gerät mit den derzeit installierten Optionen nicht unterstützt. Sie muss abgeschaltet werden.</translation>
    </message>
    <message>
        <source>Frequency range is not entirely covered without gaps.</source>
        <translation>Der Frequenzbereich ist nicht lückenlos abgedeckt.</translation>
    </message>
    <message>
        <source>Frequency ranges are overlapping.</source>
        <translation>Frequenzbereiche überlappen sich.</translation>
    </message>
    <message>
        <source>Antenna setup is valid.</source>
        <translation>Die Antennenkonfiguration ist gültig.</translation>
    </message>
    <message>
        <source>No antennas enabled.</source>
        <translation>Es ist keine Antenne eingeschaltet.</translation>
    </message>
    <message>
        <source>Antenna setup is already valid. Nothing changed.</source>
        <translation>Die Antennenkonfiguration ist bereits gültig. Es wurde nichts geändert.</translation>
    </message>
    <message>
        <source>No antenna is supported by device.</source>
        <translation>Keine Antenne wird vom Gerät unterstützt.</translation>
    </message>
    <message>
        <source>Auto configuration of antennas successfully covered range from %1 MHz to %2 MHz.</source>
        <translation>Die automatische Antennenkonfiguration deckt nun den Bereich von %1 MHz bis %2 MHz ab.</translation>
    </message>
</context>
<context>
    <name>DFDataFile</name>
    <message>
        <source>Writing to %1 works again</source>
        <translation>Schreiben nach %1 geht wieder</translation>
    </message>
    <message>
        <source>Writing to %1 failed: %2</source>
        <translation>Schreiben nach %1 ist fehlgeschlagen: %2</translation>
    </message>
    <message>
        <source>Could not move file %1 to %2, the output is appended to it: %3</source>
        <translation>Die Datei %1 konnte nicht nach %2 verschoben werden, die Ausgabe wird angehängt: %3</translation>
    </message>
    <message>
        <source>Could not open file %1: %2</source>
        <translation>Die Datei %1 konnte nicht geöffnet werden: %2</translation>
    </message>
    <message>
        <source>File %1 was removed, moved or replaced while sentences were written to it</source>
        <translation>Die Datei %1 wurde entfernt, verschoben oder ersetzt, während Sätze in sie geschrieben wurden</translation>
    </message>
    <message>
        <source>another output writes to it, or it is read as a recording</source>
        <translation>eine andere Ausgabe schreibt darin, oder sie wird als Aufzeichnung gelesen</translation>
    </message>
    <message>
        <source>it is a link, or a file that has another name as well</source>
        <translation>sie ist eine Verknüpfung oder eine Datei, die noch einen anderen Namen hat</translation>
    </message>
    <message>
        <source>no program reads from it</source>
        <translation>kein Programm liest daraus</translation>
    </message>
    <message>
        <source>its reader takes nothing</source>
        <translation>das lesende Programm nimmt nichts ab</translation>
    </message>
    <message>
        <source>standard output</source>
        <translation>die Standardausgabe</translation>
    </message>
</context>
<context>
    <name>DFDataOutput</name>
    <message>
        <source>Writing to %1 works again</source>
        <translation>Schreiben nach %1 geht wieder</translation>
    </message>
    <message>
        <source>Writing to %1 failed: %2</source>
        <translation>Schreiben nach %1 ist fehlgeschlagen: %2</translation>
    </message>
    <message>
        <source>the serial line is not ready</source>
        <translation>die serielle Leitung ist nicht bereit</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Address:</source>
        <translation>Adresse:</translation>
    </message>
    <message>
        <source>Filename:</source>
        <translation>Dateiname:</translation>
    </message>
    <message>
        <source>Output interval (ms):</source>
        <translation>Ausgabeintervall (ms):</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>Pitch/Roll value exceeds threshold.</source>
        <translation>Stampf- oder Rollwinkel überschreitet die Schwelle.</translation>
    </message>
</context>
</TS>
