#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Looks at a page with headless Chromium until it shows what it must.

see-page.py URL PICTURE TEXT...: ends with status 0 when the page shows all the texts, and neither a script's
error nor a breach of its content policy was noted; PICTURE gets a screenshot. Needs the packages chromium and
python3-websocket.
"""
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
    url, picture, *texts = sys.argv[1:]
    with tempfile.TemporaryDirectory() as profile:
        # What the browser says goes into a file, since nobody empties a pipe.
        with open(os.path.join(profile, "log"), "w") as log:
            browser = subprocess.Popen(
                ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                 "--remote-debugging-port=0", "--remote-allow-origins=*", "--window-size=1000,1400",
                 "--user-data-dir=" + profile, "about:blank"],
                stdout=log, stderr=log)
        try:
            return look(port_of(browser, profile), url, picture, texts)
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


def look(port, url, picture, texts):
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

    ask("Runtime.enable")
    ask("Log.enable")
    ask("Page.navigate", url=url)
    end = time.monotonic() + PATIENCE_s
    missing = texts
    while missing and time.monotonic() < end:
        shown = ask("Runtime.evaluate", expression="document.body.innerText").get("result", {}).get("value", "")
        missing = [text for text in texts if text not in shown]
        if missing:
            time.sleep(PAUSE_s)
    image = ask("Page.captureScreenshot", format="png")
    with open(picture, "wb") as file:
        file.write(base64.b64decode(image["data"]))
    for text in missing:
        print("the page does not show: " + text)
    for fault in faults:
        print("the browser notes: " + fault)
    return 1 if missing or faults else 0


if __name__ == "__main__":
    sys.exit(main())
