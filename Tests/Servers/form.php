<?php
// Tells as JSON what PHP itself has read of a form. usage: php [-d SETTING]... -S 127.0.0.1:0 form.php
$fields = [];
foreach ($_POST as $name => $value) {
	$fields[] = [(string)$name, $value];
}
$files = [];
foreach ($_FILES as $field => $file) {
	$isHere = $file["error"] === UPLOAD_ERR_OK;
	$files[] = [
		"field" => $field,
		"name" => $file["name"],
		"type" => $file["type"],
		"size" => $isHere ? $file["size"] : -$file["error"],
		"sha256" => $isHere ? hash_file("sha256", $file["tmp_name"]) : "",
	];
}
header("Content-Type: application/json");
echo json_encode(["fields" => $fields, "files" => $files], JSON_UNESCAPED_UNICODE | JSON_THROW_ON_ERROR);
