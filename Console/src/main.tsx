import { render } from "preact";
import { App } from "./App";
import { startClient } from "./client/resources";
import { startHistory } from "./views/metrics/series";
import "./style.css";

const place = document.getElementById("app");
if (place !== null) {
    startClient();
    startHistory();
    render(<App />, place);
}
