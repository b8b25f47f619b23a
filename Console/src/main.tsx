import { render } from "preact";
import { App } from "./App";
import { startClient } from "./client/resources";
import "./style.css";

const place = document.getElementById("app");
if (place !== null) {
    startClient();
    render(<App />, place);
}
