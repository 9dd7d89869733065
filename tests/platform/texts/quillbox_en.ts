<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="zh_CN">
<context>
    <name>Localizable</name>
    <message><source>语言</source><translation>English</translation></message>
</context>
<context>
    <name>Other</name>
    <message><source>语言</source><translation>other</translation></message>
</context>
</TS>
