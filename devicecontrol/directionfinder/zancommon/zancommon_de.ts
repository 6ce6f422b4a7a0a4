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
</TS>
