<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>ActivitiesManager</name>
    <message numerus="yes">
        <source>Moving %n items to %1</source>
        <translation>
            <numerusform>Moving %n item to %1</numerusform>
            <numerusform>Moving %n items to %1</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Copying %n items to %1</source>
        <translation>
            <numerusform>Copying %n item to %1</numerusform>
            <numerusform>Copying %n items to %1</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Making aliases of %n items</source>
        <translation>
            <numerusform>Making aliases of %n item</numerusform>
            <numerusform>Making aliases of %n items</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Moving %n items to the Trash</source>
        <translation>
            <numerusform>Moving %n item to the Trash</numerusform>
            <numerusform>Moving %n items to the Trash</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Duplicating %n items</source>
        <translation>
            <numerusform>Duplicating %n item</numerusform>
            <numerusform>Duplicating %n items</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Renaming %n items</source>
        <translation>
            <numerusform>Renaming %n item</numerusform>
            <numerusform>Renaming %n items</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Putting back %n items</source>
        <translation>
            <numerusform>Putting back %n item</numerusform>
            <numerusform>Putting back %n items</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Rotating %n images</source>
        <translation>
            <numerusform>Rotating %n image</numerusform>
            <numerusform>Rotating %n images</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ActivitiesWindowController</name>
    <message numerus="yes">
        <source>Apply to all (%n more)</source>
        <translation>
            <numerusform>Apply to all (%n more)</numerusform>
            <numerusform>Apply to all (%n more)</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>BugReportSender</name>
    <message numerus="yes">
        <source>The server did not answer within %n second(s).</source>
        <translation>
            <numerusform>The server did not answer within %n second.</numerusform>
            <numerusform>The server did not answer within %n seconds.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>FileRenamerWindow</name>
    <message numerus="yes">
        <source>Renamed %n file(s), then stopped.</source>
        <translation>
            <numerusform>Renamed %n file, then stopped.</numerusform>
            <numerusform>Renamed %n files, then stopped.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Renamed %n file(s).</source>
        <translation>
            <numerusform>Renamed %n file.</numerusform>
            <numerusform>Renamed %n files.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Looking for files… %n found</source>
        <translation>
            <numerusform>Looking for files… %n found</numerusform>
            <numerusform>Looking for files… %n found</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) will be renamed</source>
        <translation>
            <numerusform>%n file will be renamed</numerusform>
            <numerusform>%n files will be renamed</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n name(s) already taken: nothing is renamed until they differ</source>
        <translation>
            <numerusform>%n name already taken: nothing is renamed until they differ</numerusform>
            <numerusform>%n names already taken: nothing is renamed until they differ</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n name(s) too long, kept as they are</source>
        <translation>
            <numerusform>%n name too long, kept as they are</numerusform>
            <numerusform>%n names too long, kept as they are</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>MainMenuBar</name>
    <message numerus="yes">
        <source>%n Level(s) Deep</source>
        <translation>
            <numerusform>%n Level Deep</numerusform>
            <numerusform>%n Levels Deep</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>MainWindowViewController</name>
    <message numerus="yes">
        <source>%1 and %n more</source>
        <translation>
            <numerusform>%1 and %n more</numerusform>
            <numerusform>%1 and %n more</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ThumbnailsActionHandler</name>
    <message numerus="yes">
        <source>Move %n rejected item(s) to the Trash?</source>
        <translation>
            <numerusform>Move %n rejected item to the Trash?</numerusform>
            <numerusform>Move %n rejected items to the Trash?</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>UpdateChecker</name>
    <message numerus="yes">
        <source>The release feed is larger than %n MB.</source>
        <translation>
            <numerusform>The release feed is larger than %n MB.</numerusform>
            <numerusform>The release feed is larger than %n MB.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>The update server did not answer within %n second(s).</source>
        <translation>
            <numerusform>The update server did not answer within %n second.</numerusform>
            <numerusform>The update server did not answer within %n seconds.</numerusform>
        </translation>
    </message>
</context>
</TS>
