#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Looks at a page with headless Chromium until it shows what it must.

see-page.py [--open TEXT] URL PICTURE TEXT...: ends with status 0 when the page shows all the texts, and neither
a script's error nor a breach of its content policy was noted; PICTURE gets a screenshot. With --open, a
transmission with that text is opened, and has to show its picture. Needs the packages chromium and
python3-websocket.
"""
import argparse
import base64
import json
import os
import subprocess
import sys
import tempfile
import time
import urllib.request

import websocket

PATIENCE_s = 120
PAUSE_s = 0.2


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--open")
    parser.add_argument("url")
    parser.add_argument("picture")
    parser.add_argument("text", nargs="+")
    words = parser.parse_args()
    with tempfile.TemporaryDirectory() as profile:
        # What the browser says goes into a file, since nobody empties a pipe.
        with open(os.path.join(profile, "log"), "w") as log:
            browser = subprocess.Popen(
                ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                 "--remote-debugging-port=0", "--remote-allow-origins=*", "--window-size=1000,1400",
                 "--user-data-dir=" + profile, "about:blank"],
                stdout=log, stderr=log)
        try:
            return look(port_of(browser, profile), words)
        finally:
            browser.kill()
            browser.wait()


def port_of(browser, profile):
    """Of the debugging interface, which the browser writes into its profile when it is there."""
    path = os.path.join(profile, "DevToolsActivePort")
    end = time.monotonic() + PATIENCE_s
    while browser.poll() is None and time.monotonic() < end:
        if os.path.exists(path):
            with open(path) as file:
                lines = file.read().split("\n")
            if len(lines) > 1:
                return int(lines[0])
        time.sleep(PAUSE_s)
    with open(os.path.join(profile, "log")) as log:
        sys.exit("the browser does not start:\n" + log.read()[-2000:])


# What is heard while one is opened may not be archived yet, so one is tried after the other.
OPEN = """(() => {
    const picture = document.querySelector("#detail[open] img.picture");
    if (picture && picture.complete)
        return picture.naturalWidth > 0;
    if (!document.querySelector("#detail[open]"))
        [...document.querySelectorAll("#latest button.text")].filter((one) => one.textContent.includes(%s)).pop()?.click();
    return false;
})()"""


def look(port, words):
    with urllib.request.urlopen("http://127.0.0.1:%d/json" % port) as answer:
        page = next(one for one in json.load(answer) if one["type"] == "page")
    socket = websocket.create_connection(page["webSocketDebuggerUrl"], timeout=PATIENCE_s)
    faults = []
    count = 0

    def ask(method, **words):
        nonlocal count
        count += 1
        socket.send(json.dumps({"id": count, "method": method, "params": words}))
        while True:
            message = json.loads(socket.recv())
            if message.get("id") == count:
                return message.get("result", {})
            if message.get("method") == "Runtime.exceptionThrown":
                faults.append(json.dumps(message["params"]["exceptionDetails"]))
            if message.get("method") == "Log.entryAdded" and message["params"]["entry"]["level"] == "error":
                faults.append(message["params"]["entry"]["text"])

    def value(expression):
        return ask("Runtime.evaluate", expression=expression).get("result", {}).get("value", "")

    ask("Runtime.enable")
    ask("Log.enable")
    ask("Page.navigate", url=words.url)
    end = time.monotonic() + PATIENCE_s
    missing = words.text
    while missing and time.monotonic() < end:
        shown = value("document.body.innerText")
        missing = [text for text in words.text if text not in shown]
        if missing:
            time.sleep(PAUSE_s)
    if words.open:
        missing.append("the picture of " + words.open)
        while time.monotonic() < end and not value(OPEN % json.dumps(words.open)):
            time.sleep(PAUSE_s)
        if value(OPEN % json.dumps(words.open)):
            missing.pop()
    image = ask("Page.captureScreenshot", format="png")
    with open(words.picture, "wb") as file:
        file.write(base64.b64decode(image["data"]))
    for text in missing:
        print("the page does not show: " + text)
    for fault in faults:
        print("the browser notes: " + fault)
    return 1 if missing or faults else 0


if __name__ == "__main__":
    sys.exit(main())
