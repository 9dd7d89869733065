<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_TW" sourcelanguage="zh_CN">
<context>
    <name>Localizable</name>
    <message><source>语言</source><translation>繁體</translation></message>
</context>
<context>
    <name>Other</name>
    <message><source>语言</source><translation>other</translation></message>
</context>
</TS>
